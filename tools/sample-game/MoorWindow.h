#pragma once

#include <QString>
#include <QWidget>

// The one window of the sample game: the moor at dusk, the name of the game and what it was handed.
// Closing it or pressing Escape ends the application.
class MoorWindow : public QWidget
{
    Q_OBJECT
public:
    MoorWindow(const QString &server, const QString &cookie, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void paintMoor(QPainter &painter) const;
    void paintFrame(QPainter &painter) const;
    void paintWords(QPainter &painter) const;

    const QString m_server;
    const QString m_cookie;
};
