#include "cmvaluenode.h"

void CMValueNode::deleteLater()
{
    QObject::deleteLater();
}
