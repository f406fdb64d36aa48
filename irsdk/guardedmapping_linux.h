#pragma once

#include <cstddef>

namespace irsdk {

/**
 * A read-only view of a shared-memory object whose owner may cut it off at any time.
 *
 * Reading a page that the object no longer has raises SIGBUS, which would end the host. Asking for
 * the object's size before reading leaves a gap: it can be cut off between the question and the
 * last byte read. Reads that fail instead of faulting close the gap, but not at the price of a
 * snapshot: for a buffer of 16 KiB, pread on the object took 2.3 times as long as fstat and memcpy
 * together, and process_vm_readv on ourselves 3.2 times. So the size is asked first, and while a
 * view exists a SIGBUS handler stands behind that: a fault inside the view turns the whole view
 * into private zeros and the read goes on. A block of zeros says "not running"; isIntact() says
 * why.
 *
 * The handler touches nothing else: any other SIGBUS goes to the handler that was there before, and
 * the former state returns with the last view, unless somebody has put a handler on top meanwhile.
 * What remains possible:
 *  - A host that replaces the handler while a view exists and does not pass the signal on takes
 *    this protection away and is left with the size check.
 *  - So does a thread that blocks SIGBUS: a fault in it ends the process without any handler.
 *  - A handler that a host put on top of ours may pass signals on to ours for as long as it lives,
 *    and that is code of this library: a host that has done so must not unload the library before
 *    its handler is gone.
 *  - A cut within the last page that is read shows zeros behind the cut without any fault, so a
 *    snapshot can hold zeros that were never published. The publisher could have written those as
 *    well.
 */
class GuardedMapping {
public:
    GuardedMapping() = default;
    ~GuardedMapping() { unmap(); }
    GuardedMapping(const GuardedMapping&) = delete;
    GuardedMapping& operator=(const GuardedMapping&) = delete;

    /** Maps the first `size` bytes of the object; false when the system refuses. */
    [[nodiscard]] bool map(int descriptor, std::size_t size);
    void unmap();

    [[nodiscard]] const char* data() const { return static_cast<const char*>(m_data); }
    [[nodiscard]] std::size_t size() const { return m_size; }

    /** False once a page of the object was missing when it was read. */
    [[nodiscard]] bool isIntact() const;

private:
    void* m_data = nullptr;
    std::size_t m_size = 0;
    int m_slot = -1;
};

}  // namespace irsdk
