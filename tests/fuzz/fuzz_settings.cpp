#include "fuzzbytes.h"
#include "settings.h"

#include <QTemporaryFile>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QTemporaryFile file;
    if (!file.open())
        return 0;
    file.write(bytesOf(data, size));
    file.flush();
    player::Settings settings;
    if (!settings.load(file.fileName(), true))
        require(!settings.error().isEmpty(), "a refused file is refused with a reason");
    return 0;
}
