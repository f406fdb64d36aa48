#include "tools/viewer/parentconsole.h"

namespace rataip::viewer {

void useParentConsole() {}

}  // namespace rataip::viewer
