#include "tests/support/publishedobjects.h"

#include <algorithm>

namespace testsupport {

bool PublishedObjects::createBlock(std::size_t size) {
    m_cutTo = std::numeric_limits<std::size_t>::max();
    return NamedObjects::createBlock(size);
}

char* PublishedObjects::block() const {
    return reinterpret_cast<char*>(NamedObjects::block().data());
}

std::size_t PublishedObjects::blockSize() const {
    return std::min(NamedObjects::block().size(), m_cutTo);
}

}  // namespace testsupport
