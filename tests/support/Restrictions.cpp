#include "Restrictions.h"

#include <sys/fsuid.h>
#include <sys/syscall.h>

#include <csignal>

namespace {

constexpr unsigned Nobody = 65534;

// Of the calling thread alone; the library's function would change all threads. The saved user
// stays, so that there is a way back.
void becomeUser(uid_t user)
{
    constexpr uid_t asBefore = uid_t(-1);
    syscall(SYS_setresuid, user, user, asBefore);
}

} // namespace

WithoutPrivileges::WithoutPrivileges() : m_user(setfsuid(Nobody)) {}

WithoutPrivileges::~WithoutPrivileges() { setfsuid(unsigned(m_user)); }

FileSizeLimit::FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
{
    getrlimit(RLIMIT_FSIZE, &m_before);
    rlimit limit = m_before;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit()
{
    setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
}

WithoutNewThreads::WithoutNewThreads()
{
    getrlimit(RLIMIT_NPROC, &m_before);
    rlimit limit = m_before;
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_NPROC, &limit);
    if (m_user == 0) // whom the limit does not bind
        becomeUser(Nobody);
}

WithoutNewThreads::~WithoutNewThreads()
{
    if (m_user == 0)
        becomeUser(m_user);
    setrlimit(RLIMIT_NPROC, &m_before);
}
