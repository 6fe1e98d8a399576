#include "LogCapture.h"
#include "TestMain.h"
#include "app/ErrorHandler.h"

#include <QTest>

class TestErrorHandler : public QObject
{
    Q_OBJECT

private slots:
    void writesOneLineWithItsFixedNameAndNumber();
    void handlesAnExceptionUnderItsOwnNameAndNumber();
    void writesPercentSignsLiterally();
    void keepsATextWithLineBreaksOnOneLine();
};

void TestErrorHandler::writesOneLineWithItsFixedNameAndNumber()
{
    const LogCapture log;
    ErrorHandler::log(Error{QStringLiteral("No space left"), 28});
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: No space left")});
}

void TestErrorHandler::handlesAnExceptionUnderItsOwnNameAndNumber()
{
    const LogCapture log;
    ErrorHandler::handle({QStringLiteral("Name"), QStringLiteral("the reason")});
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("+[ErrorHandler handle:] [line 18]: the reason")});
}

void TestErrorHandler::writesPercentSignsLiterally()
{
    const LogCapture log;
    ErrorHandler::log(QStringLiteral("100% %s %1 %n %@"));
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: 100% %s %1 %n %@")});
}

void TestErrorHandler::keepsATextWithLineBreaksOnOneLine()
{
    const LogCapture log;
    ErrorHandler::log(QStringLiteral("one\ntwo\r\x1b[31m"));
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: one\\ntwo\\r\\x1b[31m")});
}

QUELLMOOR_TEST(TestErrorHandler, "ErrorHandler")
#include "tst_ErrorHandler.moc"
