#pragma once

#include <sys/resource.h>
#include <unistd.h>

// While one lives, this thread touches files as an ordinary user, also when root runs the tests.
class WithoutPrivileges
{
public:
    WithoutPrivileges();
    ~WithoutPrivileges();
    WithoutPrivileges(const WithoutPrivileges &) = delete;
    WithoutPrivileges &operator=(const WithoutPrivileges &) = delete;

private:
    const int m_user;
};

// While one lives, no file of this process can grow beyond so many bytes: a write comes short and
// then fails, as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

// While one lives, this thread can start no other, also when root runs the tests.
class WithoutNewThreads
{
public:
    WithoutNewThreads();
    ~WithoutNewThreads();
    WithoutNewThreads(const WithoutNewThreads &) = delete;
    WithoutNewThreads &operator=(const WithoutNewThreads &) = delete;

private:
    const uid_t m_user = getuid();
    rlimit m_before{};
};
