#pragma once

#include <QSharedPointer>

#include <memory>

namespace TLM::SDK {

/**
 * A new object that is shared from the start. QSharedPointer::create() would take one piece of
 * memory instead of two, but when it gets none it destroys a pointer that was never set.
 */
template <typename Object>
[[nodiscard]] QSharedPointer<Object> makeShared() {
    auto object = std::make_unique<Object>();
    QSharedPointer<Object> shared(object.get());
    static_cast<void>(object.release());
    return shared;
}

}  // namespace TLM::SDK
