#pragma once

#include "ui/NewsView.h"

// What renders the page of a NewsView. Every navigation, redirect, frame and new window is put to
// the policy first; downloads, permissions, dialogs, printing and full screen are refused; a
// certificate is accepted only from the system's authorities and those of the extra file. Main
// thread only.
class NewsPage
{
public:
    virtual ~NewsPage() = default;

    // A child of the parent given to the factory.
    [[nodiscard]] virtual QWidget *widget() = 0;
    virtual void load(const QUrl &url) = 0;
    virtual void setDrawsBackground(bool drawsBackground) = 0;
};

// On Qt's text browser: text, links and simple layout, no scripts and no pictures.
std::unique_ptr<NewsPage> makeTextNewsPage(QWidget *parent, const QString &extraCertificateFile,
                                           NewsView::Policy policy);

// Whether a page on Qt WebEngine can be shown at all: not without OpenGL, and not in an application
// that keeps to raster widgets (Qt::AA_ForceRasterWidgets).
[[nodiscard]] bool canShowWebNewsPage();

// Makes the window of that widget, which must not be shown yet, fit for the page on Qt WebEngine.
// Otherwise the desktop would have to make the window anew, in front of the player, once there is
// such a page in it. Only where such a page can be shown.
void prepareForWebNewsPage(QWidget *widget);

// On Qt WebEngine, in processes of its own; only in builds with it.
std::unique_ptr<NewsPage> makeWebNewsPage(QWidget *parent, const QString &extraCertificateFile,
                                          NewsView::Policy policy);
