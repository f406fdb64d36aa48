#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace simulator {

/**
 * Input to the process: requests to end (Ctrl-C, a closed console, a request of the system) and, if
 * wanted, lines on standard input. A process may have only one.
 */
class Console {
public:
    /** Does not touch standard input unless `readsLines`. */
    explicit Console(bool readsLines);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /** Whether the process has been asked to end. */
    bool stopRequested() const;

    /**
     * Waits up to `atMost` for the next line and returns it without its end. No value when no line
     * came, the process was asked to end, or the input has ended.
     */
    std::optional<std::string> nextLine(std::chrono::milliseconds atMost);

    /** Whether the input has ended and all its lines were returned. */
    bool inputEnded() const;

private:
    class Input;
    std::shared_ptr<Input> m_input;
};

}  // namespace simulator
