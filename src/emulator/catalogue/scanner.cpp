#include "scanner.h"

#include "playlistreader.h"
#include "tagreader.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>

namespace emulator::catalogue {

namespace {

constexpr qint64 minReportIntervalMs = 300;
// What a report costs grows with the library; so reporting takes at most a ninth of the time.
constexpr qint64 reportCostFactor = 8;

qint64 nowMs()
{
    QElapsedTimer clock;
    clock.start();
    return clock.msecsSinceReference();
}

// The lower the better; -1: not a picture of the folder.
int pictureRank(const QString& name)
{
    static const QStringList bases{ QStringLiteral("cover"), QStringLiteral("folder"),
        QStringLiteral("front"), QStringLiteral("album") };
    static const QStringList suffixes{ QStringLiteral("jpg"), QStringLiteral("jpeg"),
        QStringLiteral("png") };
    const QFileInfo info(name);
    const int base = bases.indexOf(info.completeBaseName().toLower());
    const int suffix = suffixes.indexOf(info.suffix().toLower());
    return base < 0 || suffix < 0 ? -1 : base * suffixes.size() + suffix;
}

bool byPath(const MusicFile& a, const MusicFile& b)
{
    return a.path < b.path;
}

} // namespace

Scanner::Scanner(const QString& root, const std::atomic_bool& stop, Report report)
    : m_root(QDir(root).absolutePath())
    , m_stop(stop)
    , m_report(std::move(report))
{
}

std::optional<ScanResult> Scanner::run(const ScanResult& known)
{
    look();
    if (m_stop)
        return std::nullopt;
    takeKnown(known);
    m_status.phase = ScanStatus::Phase::Reading;
    readNew();
    if (m_stop)
        return std::nullopt;
    std::sort(m_result.files.begin(), m_result.files.end(), byPath);
    std::sort(m_status.problems.begin(), m_status.problems.end());
    m_status.phase = ScanStatus::Phase::Done;
    report();
    return std::move(m_result);
}

void Scanner::look()
{
    QDirIterator entries(m_root, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
    const int prefix = m_root.size() + (m_root.endsWith(QLatin1Char('/')) ? 0 : 1);
    while (entries.hasNext() && !m_stop) {
        const QString file = entries.next();
        visit(entries.fileInfo(), file.mid(prefix));
    }
    std::sort(m_listed.begin(), m_listed.end(), byPath);
    m_status.found = static_cast<int>(m_listed.size());
}

void Scanner::visit(const QFileInfo& info, const QString& path)
{
    if (info.isDir()) {
        if (!info.isReadable() || !info.isExecutable())
            m_status.problems.emplace_back(
                path, QStringLiteral("the folder may not be read; check its permissions"));
        return;
    }
    const QString name = info.fileName();
    const int rank = pictureRank(name);
    if (rank >= 0) {
        QString& picture = m_result.folderPictures[folderOf(path)];
        if (picture.isEmpty() || rank < pictureRank(picture))
            picture = path;
    } else if (isMusicFile(name)) {
        MusicFile file;
        file.path = path;
        file.size = info.size();
        file.modifiedMs = info.lastModified().toMSecsSinceEpoch();
        m_listed.push_back(std::move(file));
    } else if (isPlaylistFile(name)) {
        QFile playlist(info.filePath());
        constexpr qint64 readLimit = 4LL * 1024 * 1024;
        if (playlist.open(QIODevice::ReadOnly))
            m_result.playlists.push_back(parsePlaylist(path, playlist.read(readLimit), m_root));
    }
}

void Scanner::takeKnown(const ScanResult& known)
{
    QHash<QString, const MusicFile*> knownFiles;
    knownFiles.reserve(static_cast<int>(known.files.size()));
    for (const MusicFile& file : known.files)
        knownFiles.insert(file.path, &file);
    for (MusicFile& file : m_listed) {
        const MusicFile* before = knownFiles.value(file.path);
        if (before && before->size == file.size && before->modifiedMs == file.modifiedMs) {
            m_result.files.push_back(*before);
            noteProblem(*before);
        } else {
            m_new.push_back(std::move(file));
        }
    }
    m_status.toRead = static_cast<int>(m_new.size());
}

void Scanner::readNew()
{
    for (MusicFile& file : m_new) {
        if (m_stop)
            return;
        TagReading reading = readTags(m_root + QLatin1Char('/') + file.path);
        file.tags = std::move(reading.tags);
        file.problem = std::move(reading.problem);
        noteProblem(file);
        m_result.files.push_back(std::move(file));
        ++m_status.read;
        reportWhenDue();
    }
}

void Scanner::noteProblem(const MusicFile& file)
{
    if (!file.problem.isEmpty())
        m_status.problems.emplace_back(file.path, file.problem);
}

void Scanner::reportWhenDue()
{
    const qint64 start = nowMs();
    if (start < m_nextReportMs)
        return;
    report();
    const qint64 end = nowMs();
    m_nextReportMs = end + std::max(minReportIntervalMs, (end - start) * reportCostFactor);
}

void Scanner::report()
{
    m_report(m_result, m_status);
}

} // namespace emulator::catalogue
