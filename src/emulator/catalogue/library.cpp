#include "library.h"

#include "cataloguebuilder.h"
#include "scanstate.h"

#include <QDir>

namespace emulator::catalogue {

Library::Library(const QString& root, const QString& stateFile, QObject* parent)
    : QObject(parent)
    , m_root(QDir(root).absolutePath())
    , m_stateFile(stateFile)
    , m_catalogue(std::make_shared<Catalogue>())
{
}

Library::~Library()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

QString Library::absolutePath(const QString& path) const
{
    return m_root + QLatin1Char('/') + path;
}

void Library::scan()
{
    if (m_scanning)
        return;
    m_scanning = true;
    if (m_thread.joinable())
        m_thread.join();
    m_thread = std::thread([this] { scanOnThread(); });
}

void Library::scanOnThread()
{
    const auto deliver = [this](const ScanResult& result, const ScanStatus& status) {
        const CataloguePointer built = buildCatalogue(result, ++m_revision);
        QMetaObject::invokeMethod(
            this, [this, built, status] { take(built, status); }, Qt::QueuedConnection);
    };
    const ScanResult known = loadScan(m_stateFile, m_root).value_or(ScanResult());
    if (!known.files.empty())
        deliver(known, ScanStatus());
    const auto result = Scanner(m_root, m_stop, deliver).run(known);
    if (!result || m_stateFile.isEmpty())
        return;
    const QString problem = saveScan(m_stateFile, m_root, *result);
    if (!problem.isEmpty())
        QMetaObject::invokeMethod(
            this, [this, problem] { Q_EMIT stateNotSaved(problem); }, Qt::QueuedConnection);
}

void Library::take(const CataloguePointer& catalogue, const ScanStatus& status)
{
    m_catalogue = catalogue;
    m_status = status;
    Q_EMIT catalogueChanged();
    if (status.phase != ScanStatus::Phase::Done)
        return;
    m_scanning = false;
    Q_EMIT scanned();
}

} // namespace emulator::catalogue
