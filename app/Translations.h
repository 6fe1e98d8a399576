#pragma once

#include <QStringList>
#include <QTranslator>

// The player's language for the texts of the user interface, as long as it lives. The English texts
// in the program and in the interface files are the keys; a catalogue for each other language lies
// in the resources, and the toolkit's own texts come with the toolkit where they are installed.
// The window stays left to right in every language, because its artwork is not mirrored; each text
// still runs in the direction of its script. Made on the main thread after the application object
// and before the first window.
class Translations
{
public:
    // The languages that the player reads, the best one first, as QLocale::uiLanguages() has them.
    explicit Translations(const QStringList &uiLanguages);

    // The first of the languages that the launcher speaks, as a code of two letters. English when
    // it speaks none.
    [[nodiscard]] static QString languageFor(const QStringList &uiLanguages);
    // All the languages that have a catalogue, in alphabetical order.
    [[nodiscard]] static QStringList languages();

private:
    QTranslator m_toolkit;
    QTranslator m_launcher;
};
