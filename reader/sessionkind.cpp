#include "reader/sessionkind.h"

#include "reader/sessiontype.h"
#include "yaml/tstringtree.h"

std::optional<TLM::SDK::Session> SessionKind::of(const TStringTree& tree, int session) {
    const Origin origin{tree.revision(), session};
    if (origin != m_origin) {
        m_origin = origin;
        m_kind = reader::sessionOfType(reader::sessionTypeText(tree, session));
    }
    return m_kind;
}
