#include "plugin/samplelists.h"

#include "reader/heldalone.h"

using TLM::SDK::Sample;

namespace {

void dropValues(QList<Sample>& list) {
    for (Sample& sample : list) {
        sample.data() = {};
    }
}

}  // namespace

QList<Sample>& SampleLists::take(qsizetype count) {
    release();
    for (QList<Sample>& list : m_lists) {
        if (list.isEmpty() || isHeldAlone(list)) {
            list.resize(count);
            return list;
        }
    }
    QList<Sample>& list = m_lists[m_oldest];
    m_oldest = (m_oldest + 1) % listCount;
    list = QList<Sample>(count);
    return list;
}

void SampleLists::release() {
    for (QList<Sample>& list : m_lists) {
        if (isHeldAlone(list)) {
            dropValues(list);
        }
    }
}
