#pragma once

#include "sdk/lapheader.h"
#include "yaml/tstringtree.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace reader {

/** The type text of session `session` below `tree`, the session text's root; null without one. */
[[nodiscard]] inline QString sessionTypeText(const TStringTree& tree, int session) {
    using namespace Qt::StringLiterals;
    return tree.pathValue("SessionInfo/Sessions/"_L1 + QString::number(session) +
                          "/SessionType"_L1);
}

/** The kind of session that the simulator's type text names exactly; none for any other text. */
[[nodiscard]] inline std::optional<TLM::SDK::Session> sessionOfType(QStringView type) {
    using TLM::SDK::Session;
    if (type == u"Race") {
        return Session::Race;
    }
    if (type == u"Offline testing") {
        return Session::OfflineTesting;
    }
    if (type == u"Qualify") {
        return Session::Qualify;
    }
    if (type == u"Practice") {
        return Session::Practice;
    }
    if (type == u"Warmup") {
        return Session::Warmup;
    }
    return std::nullopt;
}

}  // namespace reader
