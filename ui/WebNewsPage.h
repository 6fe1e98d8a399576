#pragma once

#include "ui/NewsPage.h"

#include <QtPlugin>

// What the plugin "quellmoor-web-news" has to offer. It is no part of the program, so that Qt
// WebEngine, which is many times as large as everything else, is loaded only once there is a window
// to look at. Main thread only.
class WebNewsPageMaker
{
public:
    // Takes a line for the log.
    using Log = std::function<void(const QString &line)>;

    virtual ~WebNewsPageMaker() = default;
    // The page is a child of the parent; the plugin stays loaded.
    [[nodiscard]] virtual std::unique_ptr<NewsPage> make(QWidget *parent,
                                                         const QString &extraCertificateFile,
                                                         NewsView::Policy policy,
                                                         const Log &log) = 0;
};

#define WebNewsPageMaker_iid "quellmoor.WebNewsPageMaker/1"
Q_DECLARE_INTERFACE(WebNewsPageMaker, WebNewsPageMaker_iid)
