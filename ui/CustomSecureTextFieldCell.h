#pragma once

#include "ui/PaddedTextFieldCell.h"
#include "ui/TextField.h"

// The field for the password: a text field for secrets with a padding on the left.
class CustomSecureTextFieldCell : public PaddedTextFieldCell<SecureTextField>
{
    Q_OBJECT
    Q_PROPERTY(double leftPadding READ leftPadding WRITE setLeftPadding)

public:
    using PaddedTextFieldCell::PaddedTextFieldCell;
};
