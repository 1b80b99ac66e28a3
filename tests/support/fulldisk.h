#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

/// No file may grow beyond so many bytes while it lives, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{ bytes, m_before.rlim_max };
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    void (*m_handler)(int);
    rlimit m_before;
};
