#include "terminal.h"

#include <unistd.h>

namespace prismo::tool {

bool ErrorOutputIsTerminal() { return isatty(STDERR_FILENO); }

void MakeStandardOutputBinary() {}

}  // namespace prismo::tool
