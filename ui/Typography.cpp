#include "ui/Typography.h"

#include <QStringList>

namespace {

QFont fontOf(const QStringList &families, int pixelSize, QFont::Weight weight)
{
    QFont font;
    font.setFamilies(families);
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferVerticalHinting);
    return font;
}

} // namespace

namespace Typography {

QFont display(int pixelSize, QFont::Weight weight)
{
    static const QStringList families{
        QStringLiteral("EB Garamond 12"), QStringLiteral("EB Garamond"),
        QStringLiteral("Hoefler Text"),   QStringLiteral("P052"),
        QStringLiteral("DejaVu Serif"),   QStringLiteral("serif")};
    return fontOf(families, pixelSize, weight);
}

QFont text(int pixelSize, QFont::Weight weight)
{
    static const QStringList families{QStringLiteral("Lato"), QStringLiteral("Avenir Next"),
                                      QStringLiteral("Noto Sans"), QStringLiteral("DejaVu Sans"),
                                      QStringLiteral("sans-serif")};
    return fontOf(families, pixelSize, weight);
}

} // namespace Typography
