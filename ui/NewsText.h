#pragma once

#include <QString>

// What a page of news says, as HTML that Qt's text browser lays out at once, whatever came:
// headings, paragraphs, lists, bold and italic words and links (`href` as it came), one level deep,
// without styles, tables, pictures and scripts. Of a long page only the beginning, some 20,000
// letters, and "..." behind it. Takes some milliseconds at most. Any thread.
[[nodiscard]] QString simpleNews(const QString &page);
