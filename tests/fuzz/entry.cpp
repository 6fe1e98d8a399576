#include "Target.h"
#include "TestMain.h"

#include <QCoreApplication>

#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    TestMain::makePrivateHome();
    static const QCoreApplication application(*argc, *argv);
    prepareFuzzTarget();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Not a copy: what lies behind the last byte is not ours, and the sanitizer knows it.
    fuzzTarget(QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}
