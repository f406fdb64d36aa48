#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace simulator {

/**
 * What reaches the process from outside: the wish to end (Ctrl-C, a closed console, the system's
 * polite request) and, where wanted, lines on standard input. One object a process.
 */
class Console {
public:
    /** Standard input is left alone unless `readsLines`. */
    explicit Console(bool readsLines);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /** Whether the process has been asked to end. */
    bool stopRequested() const;

    /**
     * The next line without its end, waiting up to `atMost` for it. No value when none came, when
     * the process was asked to end or when the input has ended.
     */
    std::optional<std::string> nextLine(std::chrono::milliseconds atMost);

    /** Whether the input has ended and every line of it was handed out. */
    bool inputEnded() const;

private:
    class Input;
    std::shared_ptr<Input> m_input;
};

}  // namespace simulator
