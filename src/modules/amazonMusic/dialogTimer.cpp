#include "dialogTimer.h"

#include "amazonMusicLog.h"
#include "cmnode.h"
#include "tavuconnect.h"

DialogTimer::DialogTimer(CMNode* node, int timeout)
    : m_node(node)
    , m_timer(this)
{
    AMAZON_MUSIC_ENTER();
    m_timer.setSingleShot(true);
    m_timer.setInterval(timeout);
    tavuConnect(&m_timer, SIGNAL(timeout()), this, SLOT(on_timeout()), Qt::AutoConnection);
    m_timer.start();
}

DialogTimer::~DialogTimer()
{
    AMAZON_MUSIC_ENTER();
}

void DialogTimer::on_timeout()
{
    AMAZON_MUSIC_ENTER();
    if (m_node)
        m_node->deleteLater();
    QObject::deleteLater();
}
