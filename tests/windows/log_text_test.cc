// The text of a log has the line ends of Windows, also where its own texts hold a carriage return.
#include <gtest/gtest.h>

#include <string>

#include "PrismoUtl.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

TEST(LogText, HasLineEndsOfTextFiles) {
  const TempFolder folder;
  WriteFile(folder / "log.pxu", Bytes(48, 0));
  ASSERT_EQ(ConvLogPXU((folder / "log.pxu").c_str(), (folder / "log.txt").c_str(), 0), UTL_STS_SUCCESS);
  const Bytes bytes = ReadFile(folder / "log.txt");
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
            "\r\n\r\n=============================================================\r\n\r\n"
            "Log date: 0/0/0 0:0:0\r\n\r\n"
            "Performance frequency: 0\r\n\r\n"
            "CPU core number: 0\r\r\n"
            "Log data version: Ver0.0.0\r\r\n");
  TerminateMPThreads();
}

}  // namespace
}  // namespace prismo::test
