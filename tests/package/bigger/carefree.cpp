// The user's own code, which is none of the project's business: it converts and shadows as it
// likes.
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
