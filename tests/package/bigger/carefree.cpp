// A user's code. The project's warnings do not apply to it: it may convert and shadow.
#include "sdk/lap.h"

int carefree(const TLM::SDK::Lap& lap) {
    double share = 0.5;
    int half = lap.size() * share;
    {
        int share = 1;
        half += share;
    }
    return half;
}
