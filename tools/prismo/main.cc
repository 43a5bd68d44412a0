#include "application.h"
#include "scratch_file.h"

int main(int argc, char** argv) {
  prismo::tool::RemoveScratchFilesOnSignals();
  return prismo::tool::Run(argc, argv);
}
