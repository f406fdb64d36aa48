#pragma once

#include "yaml/tstringtree.h"

/**
 * The session-info reader as one would say its rules aloud, a list of lines and a list of parts a
 * line, for comparison with the one that works on slices.
 */
class PlainYamlTree : public TStringTree {
public:
    PlainYamlTree() : TStringTree(nullptr) {}

    void setYaml(const char* yaml);

    /** How often two sections stood side by side with nothing between them. */
    int adjoiningSections() const { return m_adjoiningSections; }

private:
    int m_adjoiningSections = 0;
};
