#include <benchmark/benchmark.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <QCoreApplication>

// GLib allocates its first table of names when it is loaded and drops it when the table grows; and
// where bare GStreamer frees a message, a few bytes of an object in it stay. The stacks of these
// leaks end at the allocating function.
extern "C" __attribute__((visibility("default"))) const char*
__lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:^g_malloc$\n";
}

int main(int argc, char** argv)
{
    // As in a player that runs: nothing below "info" is logged.
    const log4cplus::Initializer logging;
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.setLogLevel(log4cplus::INFO_LOG_LEVEL);
    root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
