// A library that is no plug-in.
#include <QtGlobal>

extern "C" Q_DECL_EXPORT int nothing_of_interest();

extern "C" int nothing_of_interest()
{
    return 1;
}
