#include "app/Translations.h"

#include <QDir>
#include <QGuiApplication>
#include <QLibraryInfo>

namespace {

const auto English = QStringLiteral("en");
const auto Folder = QStringLiteral(":/i18n");
const auto Prefix = QStringLiteral("quellmoor_");
const auto Suffix = QStringLiteral(".qm");

QString codeOf(const QString &language)
{
    // The locale without a language of its own has the texts of the program, which are English.
    const QString code = language.left(language.indexOf(QLatin1Char('-'))).toLower();
    return code == QStringLiteral("c") ? English : code;
}

void install(QTranslator &translator, const QString &path)
{
    if (translator.load(path))
        QCoreApplication::installTranslator(&translator);
}

} // namespace

Translations::Translations(const QStringList &uiLanguages)
{
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    const QString language = languageFor(uiLanguages);
    if (language == English)
        return;
    const QString toolkitFolder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    install(m_toolkit, toolkitFolder + QStringLiteral("/qtbase_") + language + Suffix);
    install(m_launcher, Folder + QLatin1Char('/') + Prefix + language + Suffix);
}

QString Translations::languageFor(const QStringList &uiLanguages)
{
    for (const QString &language : uiLanguages) {
        QString code = codeOf(language);
        if (code == English || languages().contains(code))
            return code;
    }
    return English;
}

QStringList Translations::languages()
{
    QStringList codes;
    const auto files =
        QDir(Folder).entryList({Prefix + QLatin1Char('*') + Suffix}, QDir::Files, QDir::Name);
    for (const QString &file : files)
        codes += file.mid(Prefix.size()).chopped(Suffix.size());
    return codes;
}
