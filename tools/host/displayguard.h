#pragma once

#include <string>

namespace rataip::host {

/**
 * While it lives, an application object that finds no display ends the program with one sentence
 * and an exit status; Qt alone would abort after several. Other messages come out when the guard
 * goes. At most one at a time.
 */
class DisplayGuard {
public:
    /** `sentence` says what cannot be done; the reason follows it in parentheses. */
    DisplayGuard(const std::string& sentence, int exitStatus);
    ~DisplayGuard();
    DisplayGuard(const DisplayGuard&) = delete;
    DisplayGuard& operator=(const DisplayGuard&) = delete;
};

}  // namespace rataip::host
