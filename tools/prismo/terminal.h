#pragma once

namespace prismo::tool {

bool ErrorOutputIsTerminal();

}  // namespace prismo::tool
