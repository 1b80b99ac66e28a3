#include "fuzzbytes.h"
#include "tavujson.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QVariant value = TavuJson::parse(bytesOf(data, size));
    if (!value.isValid())
        return 0;
    const QByteArray written = TavuJson::toJson(value);
    require(TavuJson::toJson(TavuJson::parse(written)) == written, "what is written reads back");
    return 0;
}
