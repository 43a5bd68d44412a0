#include "terminal.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace prismo::tool {

bool ErrorOutputIsTerminal() { return _isatty(_fileno(stderr)); }

void MakeStandardOutputBinary() { _setmode(_fileno(stdout), _O_BINARY); }

}  // namespace prismo::tool
