#include "TestMain.h"

#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <map>
#include <string>

namespace TestMain {

namespace {

std::map<std::string, Factory> &factories()
{
    static std::map<std::string, Factory> instance;
    return instance;
}

int runOne(const Factory &factory, const QStringList &arguments)
{
    const auto test = factory();
    return QTest::qExec(test.get(), arguments);
}

} // namespace

bool add(const char *name, Factory factory)
{
    return factories().emplace(name, std::move(factory)).second;
}

int run(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments += QString::fromLocal8Bit(argv[i]);
    if (argc > 1) {
        const auto found = factories().find(argv[1]);
        if (found == factories().end()) {
            std::fprintf(stderr, "no test class %s\n", argv[1]);
            return 2;
        }
        arguments.removeAt(1);
        return runOne(found->second, arguments);
    }
    int failures = 0;
    for (const auto &[name, factory] : factories())
        failures += runOne(factory, arguments) != 0;
    return failures;
}

void makePrivateHome()
{
    static const QTemporaryDir home;
    const QByteArray path = home.path().toLocal8Bit();
    qputenv("HOME", path);
    qputenv("XDG_DATA_HOME", path + "/data");
    qputenv("XDG_CONFIG_HOME", path + "/config");
    qputenv("XDG_CACHE_HOME", path + "/cache");
    qputenv("XDG_STATE_HOME", path + "/state");
    qputenv("XDG_RUNTIME_DIR", path);
}

} // namespace TestMain
