#include "StandardOutput.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

StandardOutput::StandardOutput()
{
    std::fflush(stdout);
    m_before = dup(STDOUT_FILENO);
    m_file = memfd_create("stdout", MFD_CLOEXEC);
    if (m_before < 0 || m_file < 0 || dup2(m_file, STDOUT_FILENO) < 0)
        qFatal("standard output cannot be taken");
}

StandardOutput::~StandardOutput()
{
    restore();
    close(m_file);
}

QByteArray StandardOutput::text()
{
    restore();
    QByteArray bytes(qsizetype(lseek(m_file, 0, SEEK_END)), '\0');
    if (pread(m_file, bytes.data(), size_t(bytes.size()), 0) != ssize_t(bytes.size()))
        qFatal("standard output cannot be read");
    return bytes;
}

void StandardOutput::restore()
{
    if (m_before < 0)
        return;
    std::fflush(stdout);
    const int before = std::exchange(m_before, -1);
    dup2(before, STDOUT_FILENO);
    close(before);
}
