#pragma once

namespace rataip::viewer {

/**
 * Lets the standard output and errors appear in the console from which the program was started,
 * where the system gives a program with windows none. What was redirected into a file or a pipe
 * stays so. To be called once, before the first output.
 */
void useParentConsole();

}  // namespace rataip::viewer
