#pragma once

#include <QObject>

#include <functional>
#include <memory>

// Test classes of one binary register themselves; main() runs the one named by its first argument
// (the others go to Qt Test), or all. Every run has a home of its own that is gone afterwards, so
// no test ever sees the settings or folders of whoever runs it.
namespace TestMain {

using Factory = std::function<std::unique_ptr<QObject>()>;

bool add(const char *name, Factory factory);
int run(int argc, char **argv);

// Makes the private home and points HOME and the XDG folders there. Before the application object.
void makePrivateHome();

} // namespace TestMain

#define QUELLMOOR_TEST(Class, Name)                                                                \
    static const bool Class##IsRegistered =                                                        \
        TestMain::add(Name, [] { return std::make_unique<Class>(); });
