#include "ui/NewsPage.h"

#include "app/ErrorHandler.h"
#include "ui/WebNewsPage.h"

#include <QCoreApplication>
#include <QOpenGLContext>
#include <QPluginLoader>

#include <unistd.h>

#ifdef QUELLMOOR_WITH_WEBENGINE
QT_BEGIN_NAMESPACE
// Of Qt, and used by its web engine.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);
QT_END_NAMESPACE

namespace {

// The web engine's sandbox does not work for root, and without it the engine ends the process.
bool isRootWithSandbox()
{
    return geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX");
}

// The web engine asks this context for its format, even when it draws without OpenGL. One that was
// never created has a format and costs nothing, where Qt would load a graphics driver for one.
void setShareContext()
{
    if (!QOpenGLContext::globalShareContext())
        qt_gl_set_global_share_context(new QOpenGLContext(QCoreApplication::instance()));
}

WebNewsPageMaker *webNewsPageMaker()
{
    setShareContext();
    // Where Qt has its plugins, or beside the program.
    QPluginLoader loader(QStringLiteral("quellmoor-web-news"));
    auto *maker = qobject_cast<WebNewsPageMaker *>(loader.instance());
    if (!maker)
        ErrorHandler::log(
            QStringLiteral("The news are shown as text: %1").arg(loader.errorString()));
    return maker;
}

} // namespace
#endif

NewsView::PageFactory newsPages(HttpClient &httpClient,
                                [[maybe_unused]] const QString &extraCertificateFile)
{
#ifdef QUELLMOOR_WITH_WEBENGINE
    return [texts = textNewsPages(httpClient),
            extraCertificateFile](QWidget *parent, const NewsView::Policy &policy) {
        auto *maker = isRootWithSandbox() ? nullptr : webNewsPageMaker();
        return maker ? maker->make(parent, extraCertificateFile, policy,
                                   [](const QString &line) { ErrorHandler::log(line); })
                     : texts(parent, policy);
    };
#else
    return textNewsPages(httpClient);
#endif
}
