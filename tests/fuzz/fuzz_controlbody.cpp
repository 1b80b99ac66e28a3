#include "fuzzbytes.h"
#include "requestbody.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto body = control::RequestBody::parse(bytesOf(data, size));
    if (!body)
        return 0;
    for (const char* name :
        { "ref", "path", "text", "value", "position", "mode", "volume", "mute" }) {
        const auto number = body->integer(name, 0, 100);
        require(!number || (*number >= 0 && *number <= 100), "a number keeps to its bounds");
        const int kinds = int(number.has_value()) + int(body->text(name).has_value())
            + int(body->flag(name).has_value());
        require(kinds <= 1, "a member is of one kind");
        require(kinds == 0 || body->has(name), "what is read is there");
    }
    return 0;
}
