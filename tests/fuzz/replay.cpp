#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Feeds every file of a corpus to a fuzz target. An empty corpus is a fault: nothing was tested.
int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    int count = 0;
    QDirIterator files(QString::fromLocal8Bit(argc > 1 ? argv[1] : "."), QDir::Files);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly))
            return 1;
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
            static_cast<std::size_t>(bytes.size()));
        ++count;
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
