#include "Restrictions.h"

#include <sys/fsuid.h>

#include <csignal>

namespace {

constexpr unsigned Nobody = 65534;

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
