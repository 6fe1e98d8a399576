#pragma once

#include "ui/NewsView.h"

class HttpClient;

// What renders the page of a NewsView. Every navigation, redirect, frame and new window is put to
// the policy first; downloads, permissions, dialogs, printing and full screen are refused; a
// certificate is accepted only from the system's authorities and those named besides. Main thread
// only.
class NewsPage
{
public:
    virtual ~NewsPage() = default;

    // A child of the parent given to the factory.
    [[nodiscard]] virtual QWidget *widget() = 0;
    virtual void load(const QUrl &url) = 0;
    virtual void setDrawsBackground(bool drawsBackground) = 0;
};

// On Qt's text browser: text, links and simple layout, no scripts and no pictures. The client must
// outlive the pages.
[[nodiscard]] NewsView::PageFactory textNewsPages(HttpClient &httpClient);

// What the launcher shows: pages on Qt WebEngine, in processes of its own, which trusts the
// certificates of the extra file besides the system's, or text pages where there is no such engine:
// in builds without it, for root, whom its sandbox does not serve, and when it cannot be loaded,
// which the log then tells. Loading it takes a while.
[[nodiscard]] NewsView::PageFactory newsPages(HttpClient &httpClient,
                                              const QString &extraCertificateFile);
