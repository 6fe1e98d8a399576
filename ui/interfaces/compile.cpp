// Reads an interface file while the program is built:
//   quellmoor-compile-interface UI FILE
#include "ui/InterfaceCompiler.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    QFile source(words.value(1));
    if (!source.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qUtf8Printable(source.fileName()),
                     qUtf8Printable(source.errorString()));
        return EXIT_FAILURE;
    }
    const auto read = InterfaceCompiler::read(source);
    if (const auto *why = std::get_if<QString>(&read)) {
        std::fprintf(stderr, "%s, %s\n", qUtf8Printable(source.fileName()), qUtf8Printable(*why));
        return EXIT_FAILURE;
    }
    QFile file(words.value(2));
    QDataStream stream(&file);
    if (file.open(QIODevice::WriteOnly))
        stream << std::get<InterfaceFile>(read);
    if (stream.status() != QDataStream::Ok || !file.flush()) {
        std::fprintf(stderr, "%s: %s\n", qUtf8Printable(file.fileName()),
                     qUtf8Printable(file.errorString()));
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
