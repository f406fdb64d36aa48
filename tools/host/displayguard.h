#pragma once

#include <string>

namespace rataip::host {

/**
 * While this object exists, creating an application object without a display ends the program with
 * one sentence and an exit status; Qt by itself would print several messages and abort. Other
 * messages are held back until the guard is destroyed. At most one may exist at a time.
 */
class DisplayGuard {
public:
    /** `sentence` says what cannot be done. The reason is added in parentheses. */
    DisplayGuard(const std::string& sentence, int exitStatus);
    ~DisplayGuard();
    DisplayGuard(const DisplayGuard&) = delete;
    DisplayGuard& operator=(const DisplayGuard&) = delete;
};

}  // namespace rataip::host
