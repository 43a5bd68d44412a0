#include "terminal.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace prismo::tool {

bool ErrorOutputIsTerminal() {
#ifdef _WIN32
  return _isatty(2);
#else
  return isatty(2);
#endif
}

}  // namespace prismo::tool
