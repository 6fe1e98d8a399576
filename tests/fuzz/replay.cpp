// Runs a fuzz target without libFuzzer: replay FILE_OR_FOLDER... [MUTATIONS]
// First each input as it is, then so many mutations of them, the same ones every time. The input
// that ends the process is kept in the working directory; given as FILE it runs alone.
#include "Mutator.h"

#include <QDirIterator>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

constexpr auto KeptName = "fuzz-crash";

const QByteArray *current = nullptr;

// Runs in a process that is about to end: system calls only.
void keepInput(int signal)
{
    const int file = open(KeptName, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file >= 0 && current &&
        write(file, current->constData(), size_t(current->size())) == current->size())
        close(file);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void run(const QByteArray &bytes)
{
    current = &bytes;
    // A piece of its own size, so that a sanitizer sees a read behind it.
    const std::vector<uint8_t> copy(bytes.cbegin(), bytes.cend());
    LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

QStringList filesIn(const QString &path)
{
    if (!QFileInfo(path).isDir())
        return {path};
    QStringList files;
    for (QDirIterator folder(path, QDir::Files); folder.hasNext();)
        files += folder.next();
    files.sort();
    return files;
}

QByteArrayList readAll(const QStringList &paths)
{
    QByteArrayList inputs;
    for (const QString &path : paths) {
        for (const QString &name : filesIn(path)) {
            QFile file(name);
            if (!file.open(QIODevice::ReadOnly))
                qFatal("cannot read %s", qPrintable(name));
            inputs += file.readAll();
        }
    }
    return inputs;
}

} // namespace

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(signal, keepInput);
    QStringList paths;
    for (int i = 1; i < argc; ++i)
        paths += QFile::decodeName(argv[i]);
    bool hasCount = false;
    const int mutations = paths.isEmpty() ? 0 : paths.last().toInt(&hasCount);
    if (hasCount)
        paths.removeLast();
    const QByteArrayList inputs = readAll(paths);
    if (inputs.isEmpty())
        qFatal("no inputs");

    for (const QByteArray &input : inputs)
        run(input);
    Mutator mutator(inputs);
    for (int i = 0; i < mutations; ++i)
        run(mutator.next());
    std::printf("%lld inputs and %d mutations of them\n", static_cast<long long>(inputs.size()),
                mutations);
    return 0;
}
