#include "plugin/samplelists.h"

using TLM::SDK::Sample;

namespace {

/**
 * Whether nobody else holds the list. Taking a hold and giving it back orders what another thread
 * read before it let go of the list before what is written next.
 */
bool isFree(const QList<Sample>& list) {
    if (!list.isDetached()) {
        return false;
    }
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the hold is what is wanted
    [[maybe_unused]] const QList<Sample> hold = list;
    return true;
}

void dropValues(QList<Sample>& list) {
    for (Sample& sample : list) {
        sample.data() = {};
    }
}

}  // namespace

QList<Sample>& SampleLists::take(qsizetype count) {
    release();
    for (QList<Sample>& list : m_lists) {
        if (list.isEmpty() || isFree(list)) {
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
        if (isFree(list)) {
            dropValues(list);
        }
    }
}
