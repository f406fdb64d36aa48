#pragma once

#include "sdk/lapheader.h"

#include <QtGlobal>

#include <optional>

class TStringTree;

/**
 * The kind of the session that the cars are in, read from the tree when tree or session are others
 * than before.
 *
 * A car that does not know its kind of session asks in every tick, and of a session whose type
 * names no kind 64 cars go on asking to its end.
 */
class SessionKind {
public:
    /** The kind of session `session` below `tree`, the session text's root; none is one, too. */
    [[nodiscard]] std::optional<TLM::SDK::Session> of(const TStringTree& tree, int session);

private:
    /** What the kind was read from. */
    struct Origin {
        quint64 revision;
        int session;

        bool operator==(const Origin&) const = default;
    };

    std::optional<Origin> m_origin;
    std::optional<TLM::SDK::Session> m_kind;
};
