#include "sdk/channel.h"

#include "sdk/utilities.h"

namespace TLM::SDK {

bool Channel::isValid(long long i) const {
    return isValidValue(samples.at(i));
}

}  // namespace TLM::SDK
