#pragma once

#include "ui/PaddedTextFieldCell.h"
#include "ui/TextField.h"

// The field for the account ID: a text field with a padding on the left.
class CustomTextFieldCell : public PaddedTextFieldCell<TextField>
{
    Q_OBJECT
    Q_PROPERTY(double leftPadding READ leftPadding WRITE setLeftPadding)

public:
    using PaddedTextFieldCell::PaddedTextFieldCell;
};
