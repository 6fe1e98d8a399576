#include "Catalogue.h"
#include "TestMain.h"
#include "ViewWorld.h"
#include "app/Translations.h"
#include "platform/Alerts.h"
#include "ui/AlertPanel.h"
#include "ui/InterfaceLoader.h"
#include "ui/RolloverButton.h"
#include "ui/TextLabel.h"
#include "ui/TouchBarButton.h"
#include "ui/Typography.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QRawFont>
#include <QTest>

namespace {

// The toolkit reads it once, when somebody first asks for the player's languages.
const bool isGermanPlayer = qputenv("LANGUAGE", "de_AT:en");

// What the interface file of that name makes.
std::unique_ptr<QWidget> interface(const QString &name)
{
    return std::unique_ptr<QWidget>(InterfaceLoader().load(name));
}

// Every text of an interface, by the widget and the property that it belongs to.
QMap<QString, QString> textsOf(const QWidget &root)
{
    QMap<QString, QString> texts;
    for (const QWidget *widget : root.findChildren<QWidget *>())
        for (const char *property : {"text", "placeholderText", "accessibleName", "toolTip"}) {
            const QString text = widget->property(property).toString();
            if (!text.isEmpty())
                texts.insert(widget->objectName() + QLatin1Char('.') + QLatin1String(property),
                             text);
        }
    return texts;
}

// The strip's buttons have a type of their own.
double captionWidth(const RolloverButton &button)
{
    const auto *small = qobject_cast<const TouchBarButton *>(&button);
    return small ? small->captionWidth() : button.captionWidth();
}

// The letters that the toolkit would have to take from another typeface.
QString lettersWithout(const QRawFont &font, const QString &text)
{
    QString letters;
    for (const QChar letter : text)
        if (!font.supportsCharacter(letter))
            letters += letter;
    return letters;
}

QMap<QString, QRect> geometriesOf(const QWidget &root)
{
    QMap<QString, QRect> geometries;
    for (const QWidget *widget : root.findChildren<QWidget *>())
        geometries.insert(widget->objectName(), widget->geometry());
    return geometries;
}

// Puts a right-to-left language into the toolkit, as its own catalogues do.
class RightToLeft final : public QTranslator
{
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char *, const char *sourceText, const char *,
                                    int) const override
    {
        return QLatin1String(sourceText) == QStringLiteral("QT_LAYOUT_DIRECTION")
                   ? QStringLiteral("RTL")
                   : QString();
    }
};

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private slots:
    void hasItsLanguages();
    void choosesTheFirstLanguageThatItSpeaks_data();
    void choosesTheFirstLanguageThatItSpeaks();
    void leavesEnglishAsItIs();
    void speaksAsLongAsItLives();
    void translatesEveryKey_data() { languages(); }
    void translatesEveryKey();
    void translatesEveryTextOfTheInterfaces_data() { languages(); }
    void translatesEveryTextOfTheInterfaces();
    void fitsEveryControl_data() { languages(); }
    void fitsEveryControl();
    void fitsTheButtonsOfEachAlert_data() { languages(); }
    void fitsTheButtonsOfEachAlert();
    void hasEachLetterInItsTypeface_data() { languages(); }
    void hasEachLetterInItsTypeface();
    void bringsTheTextsOfTheToolkit();
    void showsTheAlertInThePlayersLanguage();
    void keepsTheWindowLeftToRight();
    void writesEachTextInTheDirectionOfItsScript_data();
    void writesEachTextInTheDirectionOfItsScript();
    void showsAStatusInTheDirectionOfItsScript();

private:
    static void languages();
    static QStringList interfaces();
};

void TestTranslations::languages()
{
    QTest::addColumn<QString>("language");
    for (const QString &language : Translations::languages())
        QTest::newRow(qPrintable(language)) << language;
}

QStringList TestTranslations::interfaces()
{
    QStringList names;
    for (const QFileInfo &file : QDir(QStringLiteral(":/interfaces")).entryInfoList())
        names += file.completeBaseName();
    return names;
}

void TestTranslations::hasItsLanguages()
{
    QCOMPARE(Translations::languages(), (QStringList{QStringLiteral("de"), QStringLiteral("es"),
                                                     QStringLiteral("fr"), QStringLiteral("pl")}));
    QVERIFY(interfaces().contains(QStringLiteral("Launcher")));
}

void TestTranslations::choosesTheFirstLanguageThatItSpeaks_data()
{
    QTest::addColumn<QStringList>("wanted");
    QTest::addColumn<QString>("chosen");
    const std::pair<const char *, const char *> rows[] = {
        {"de", "de"},       {"de-AT,de", "de"},   {"de-Latn-DE", "de"}, {"DE-de", "de"},
        {"fr-CA", "fr"},    {"es-419", "es"},     {"pl-PL", "pl"},      {"en-GB,de", "en"},
        {"en,de,fr", "en"}, {"ja-JP,pl", "pl"},   {"ja", "en"},         {"deu", "en"},
        {"C", "en"},        {"C,de", "en"},       {"", "en"},           {"../de", "en"},
        {"d", "en"},        {"nl-BE,en,de", "en"}};
    for (const auto &[wanted, chosen] : rows)
        QTest::newRow(wanted) << QString::fromLatin1(wanted).split(QLatin1Char(','))
                              << QString::fromLatin1(chosen);
}

void TestTranslations::choosesTheFirstLanguageThatItSpeaks()
{
    QFETCH(QStringList, wanted);
    QTEST(Translations::languageFor(wanted), "chosen");
}

void TestTranslations::leavesEnglishAsItIs()
{
    const Translations translations({QStringLiteral("en-GB"), QStringLiteral("de")});
    QCOMPARE(Alerts::tr("Update"), QStringLiteral("Update"));
    const auto launcher = interface(QStringLiteral("Launcher"));
    QCOMPARE(textsOf(*launcher).value(QStringLiteral("playButton.text")), QStringLiteral("PLAY"));
}

void TestTranslations::speaksAsLongAsItLives()
{
    {
        const Translations translations({QStringLiteral("pl")});
        QCOMPARE(Alerts::tr("Cancel"), QStringLiteral("Anuluj"));
    }
    QCOMPARE(Alerts::tr("Cancel"), QStringLiteral("Cancel"));
}

void TestTranslations::translatesEveryKey()
{
    QFETCH(QString, language);
    const Translations translations({language});
    for (const Catalogue::Message &message : Catalogue::of(language).messages)
        QCOMPARE(QCoreApplication::translate(message.context.toUtf8().constData(),
                                             message.source.toUtf8().constData()),
                 message.translation);
}

void TestTranslations::translatesEveryTextOfTheInterfaces()
{
    QFETCH(QString, language);
    for (const QString &name : interfaces()) {
        QMap<QString, QString> expected = textsOf(*interface(name));
        QVERIFY(!expected.isEmpty());
        const QList<Catalogue::Message> messages = Catalogue::of(language).messages;
        for (QString &text : expected) {
            const auto found =
                std::find_if(messages.begin(), messages.end(), [&](const auto &message) {
                    return message.context == name && message.source == text;
                });
            QVERIFY2(found != messages.end(), qPrintable(text));
            text = found->translation;
        }
        const Translations translations({language});
        QCOMPARE(textsOf(*interface(name)), expected);
    }
}

void TestTranslations::fitsEveryControl()
{
    QFETCH(QString, language);
    const Translations translations({language});
    for (const QString &name : interfaces()) {
        const auto root = interface(name);
        for (const RolloverButton *button : root->findChildren<RolloverButton *>()) {
            // A plate runs out to a point on either side.
            const bool isPlate = button->captionStyle() == RolloverButton::Plate;
            const int room = isPlate ? button->width() - button->height() : button->width() - 2;
            QVERIFY2(captionWidth(*button) <= room, qPrintable(button->text()));
        }
        for (const TextField *field : root->findChildren<TextField *>()) {
            const int room = field->width() - 2 * field->textMargins().left();
            QVERIFY2(field->fontMetrics().horizontalAdvance(field->placeholderText()) <= room,
                     qPrintable(field->placeholderText()));
        }
    }
}

void TestTranslations::fitsTheButtonsOfEachAlert()
{
    QFETCH(QString, language);
    const int width = AlertPanel({}, std::nullopt, nullptr).sizeHint().width();
    const Translations translations({language});
    for (const QStringList &buttons :
         {QStringList{Alerts::tr("Update"), Alerts::tr("Exit Launcher")},
          QStringList{Alerts::tr("Enable"), Alerts::tr("Cancel")},
          QStringList{Alerts::tr("Confirm"), Alerts::tr("Cancel")}}) {
        const AlertPanel panel({QString(), QString(), buttons}, std::nullopt, nullptr);
        QVERIFY2(panel.sizeHint().width() == width, qPrintable(buttons.join(QLatin1Char(' '))));
        for (const QPushButton *button : panel.findChildren<QPushButton *>())
            QVERIFY(button->sizeHint().width() >=
                    button->fontMetrics().horizontalAdvance(button->text()));
    }
}

void TestTranslations::hasEachLetterInItsTypeface()
{
    QFETCH(QString, language);
    for (const Catalogue::Message &message : Catalogue::of(language).messages) {
        const AlertPanel panel({message.translation, message.translation, {}}, std::nullopt,
                               nullptr);
        QList<QFont> fonts{Typography::text(14)};
        for (const QLabel *label : panel.findChildren<QLabel *>())
            fonts += label->font();
        if (message.source == QStringLiteral("PLAY"))
            fonts += Typography::display(29);
        for (const QFont &font : fonts)
            QCOMPARE(lettersWithout(QRawFont::fromFont(font), message.translation), QString());
    }
}

void TestTranslations::bringsTheTextsOfTheToolkit()
{
    const Translations translations({QStringLiteral("de")});
    QCOMPARE(QCoreApplication::translate("QLineEdit", "&Copy"), QStringLiteral("&Kopieren"));
}

void TestTranslations::showsTheAlertInThePlayersLanguage()
{
    QVERIFY(isGermanPlayer);
    const Translations translations(QLocale::system().uiLanguages());
    ViewWorld world;
    world.alertPresenter.response = AlertPresenter::FirstButtonReturn + 1; // no update
    world.view->showLauncherOutOfDate(QStringLiteral("9.0"));
    QCOMPARE(world.alertPresenter.modalAlerts.size(), 1);
    const Alert alert = world.alertPresenter.modalAlerts.constFirst();
    QCOMPARE(alert.messageText, QStringLiteral("Launcher-Update erforderlich"));
    QCOMPARE(alert.informativeText,
             QStringLiteral("Für den Launcher ist ein notwendiges Update verfügbar."));
    QCOMPARE(alert.buttons,
             (QStringList{QStringLiteral("Aktualisieren"), QStringLiteral("Launcher beenden")}));
}

void TestTranslations::keepsTheWindowLeftToRight()
{
    const auto expected = geometriesOf(*interface(QStringLiteral("Launcher")));
    QApplication::setLayoutDirection(Qt::RightToLeft);
    const Translations translations({QStringLiteral("ar")});
    QCOMPARE(QApplication::layoutDirection(), Qt::LeftToRight);
    RightToLeft rightToLeft;
    QVERIFY(QCoreApplication::installTranslator(&rightToLeft));
    QCoreApplication::sendPostedEvents();
    QCOMPARE(QApplication::layoutDirection(), Qt::LeftToRight);
    ViewWorld world;
    world.showWindow();
    QCOMPARE(world.view->layoutDirection(), Qt::LeftToRight);
    QCOMPARE(geometriesOf(*interface(QStringLiteral("Launcher"))), expected);
}

void TestTranslations::writesEachTextInTheDirectionOfItsScript_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isRightToLeft");
    QTest::newRow("Latin") << QStringLiteral("Otter") << false;
    QTest::newRow("Hebrew") << QStringLiteral("לוטרה") << true;
    QTest::newRow("Arabic") << QStringLiteral("ثعلب") << true;
}

void TestTranslations::writesEachTextInTheDirectionOfItsScript()
{
    QFETCH(QString, text);
    const Translations translations({QStringLiteral("ar")});
    const auto launcher = interface(QStringLiteral("Launcher"));
    auto *field = launcher->findChild<TextField *>(QStringLiteral("accountIDField"));
    field->setText(text);
    field->home(false);
    QVERIFY(!field->grab().isNull()); // the text finds its place when it is drawn
    const QRect cursor = field->inputMethodQuery(Qt::ImCursorRectangle).toRect();
    QTEST(cursor.center().x() > field->width() / 2, "isRightToLeft");
}

void TestTranslations::showsAStatusInTheDirectionOfItsScript()
{
    const Translations translations({QStringLiteral("ar")});
    const auto launcher = interface(QStringLiteral("Launcher"));
    auto *label = launcher->findChild<TextLabel *>(QStringLiteral("statusLabel"));
    const auto pictureOf = [label](const QString &text) {
        label->setText(text);
        return label->grab().toImage();
    };
    const QString message = QStringLiteral("501: הסיסמה שגויה!");
    const QString rightToLeft = QChar(0x202b) + message + QChar(0x202c);
    const QString leftToRight = QChar(0x202a) + message + QChar(0x202c);
    QCOMPARE(pictureOf(message), pictureOf(rightToLeft));
    QVERIFY(pictureOf(message) != pictureOf(leftToRight));
}

QUELLMOOR_TEST(TestTranslations, "Translations")
#include "tst_Translations.moc"
