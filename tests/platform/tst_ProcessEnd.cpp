#include "FatalCheck.h"
#include "TestMain.h"
#include "platform/HttpClient.h"

#include <QTest>

#include <openssl/crypto.h>

#include <cstdlib>

class TestProcessEnd : public QObject
{
    Q_OBJECT

private slots:
    void leavesThreadsTheirPartOfTheTlsLibrary();
};

// What the library does when it gives back everything would end the child.
void TestProcessEnd::leavesThreadsTheirPartOfTheTlsLibrary()
{
    if (FatalCheck::isChild()) {
        const auto client = makeHttpClient(QString());
        OPENSSL_atexit([] { std::abort(); });
        std::exit(EXIT_SUCCESS);
    }
    const auto outcome = FatalCheck::runChild("ProcessEnd");
    QVERIFY2(!outcome.hasCrashed, outcome.output.constData());
}

QUELLMOOR_TEST(TestProcessEnd, "ProcessEnd")
#include "tst_ProcessEnd.moc"
