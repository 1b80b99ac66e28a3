#include "emulatorthread.h"

#include <QSemaphore>

namespace emulator {

EmulatorThread::EmulatorThread(const Settings& settings)
    : m_context(std::make_unique<QObject>())
    , m_settings(settings)
{
    m_context->moveToThread(&m_thread);
    m_thread.start();
}

EmulatorThread::~EmulatorThread()
{
    run([this] { m_emulator.reset(); });
    m_thread.quit();
    m_thread.wait();
}

void EmulatorThread::run(const std::function<void()>& function)
{
    QMetaObject::invokeMethod(m_context.get(), function, Qt::BlockingQueuedConnection);
}

QString EmulatorThread::start()
{
    QSemaphore scanned;
    QString problem;
    run([&] {
        m_emulator = std::make_unique<Emulator>(m_settings);
        if (const auto failure = m_emulator->start()) {
            problem = failure->text;
            return;
        }
        QObject::connect(&m_emulator->library(), &catalogue::Library::scanned, m_context.get(),
            [&scanned] { scanned.release(); });
    });
    if (problem.isEmpty())
        scanned.acquire();
    run([this] {
        if (m_emulator && m_emulator->httpPort())
            QObject::disconnect(&m_emulator->library(), nullptr, m_context.get(), nullptr);
    });
    return problem;
}

} // namespace emulator
