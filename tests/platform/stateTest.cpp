#include <gtest/gtest.h>
#include <zamo/core.h>

#include <string>
#include <thread>

TEST(LastError, BelongsToTheThreadAndCopiesTheFile) {
    std::string file(1000, 'x');
    VLIBCErrSetEx(5, file.c_str(), 77);
    file.assign(file.size(), 'y');
    std::thread([] {
        EXPECT_TRUE(VLIBCErrGet() == 0 && VLIBCErrorGetLine() == 0 && *VLIBCErrorGetFile() == '\0');
        VLIBCErrSetEx(6, nullptr, 1);
    }).join();
    EXPECT_TRUE(VLIBCErrGet() == 5 && VLIBCErrorGetLine() == 77);
    EXPECT_EQ(VLIBCErrorGetFile(), std::string(255, 'x'));
}
