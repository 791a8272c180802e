#include "probes/adaptergathering.h"

void AdapterGathering::run()
{
    const NetworkAdapters adapters = m_probes.adapters(*m_abort);
    if (*m_abort)
        return;
    emit adaptersRead(adapters);
    for (int index = 0; index < adapters.size(); ++index) {
        const QString speed = m_probes.linkSpeed(adapters.at(index), *m_abort);
        if (*m_abort)
            return;
        if (!speed.isEmpty())
            emit linkSpeedRead(index, speed);
    }
    emit finished();
}
