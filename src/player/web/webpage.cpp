#include "webpage.h"

#include <QtGlobal>

void initWebPage()
{
    Q_INIT_RESOURCE(tavu_web);
}
