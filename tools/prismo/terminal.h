#pragma once

namespace prismo::tool {

bool ErrorOutputIsTerminal();

// From now on line ends go out as they are, as the bytes of pictures need it.
void MakeStandardOutputBinary();

}  // namespace prismo::tool
