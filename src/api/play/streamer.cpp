#include "streamer.h"

#include <atomic>

namespace {

std::atomic<Streamer*> present{ nullptr };

} // namespace

Streamer::~Streamer()
{
    Streamer* self = this;
    present.compare_exchange_strong(self, nullptr);
}

Streamer* Streamer::instance()
{
    return present;
}

void Streamer::setInstance(Streamer* streamer)
{
    present = streamer;
}
