#include "tests/platform/host.h"

namespace {

class KeyValueFile : public testing::Test {
  protected:
    // The value, or "error".
    static std::string get(const std::string& path, const char* key) {
        char value[64] = "untouched";
        const int length = VLIBCFileGetKeyValue(path.c_str(), key, value, sizeof value, 0);
        return length < 0 ? "error" : std::string(value, static_cast<size_t>(length));
    }
    static int set(const std::string& path, const char* key, const char* value) {
        return VLIBCFileSetKeyValue(path.c_str(), key, value, 0);
    }
    static bool has(const std::string& path, const char* value) {
        return VLIBCFileCheckKeyValue(path.c_str(), "k", value, 0) != 0;
    }
    // The command plants a file that may be neither read nor kept.
    static void expectUntrusted(const std::string& plant) {
        const std::string path = "/tmp/kv/everybodys/file";
        shell("mkdir -p -m 1777 /tmp/kv/everybodys; cd /tmp/kv/everybodys; rm -f file; " + plant);
        EXPECT_EQ(get(path, "k"), "error") << plant;
        EXPECT_EQ(VLIBCErrGet(), ZAMO_ERR_SYSTEM) << plant;
        EXPECT_FALSE(has(path, "planted")) << plant;
        EXPECT_EQ(set(path, "own", "v"), 0) << plant;
        EXPECT_EQ(shell("stat -c %F:%u:%s " + path), "regular file:0:8\n") << plant;
    }

    const Directory place_{"/tmp/kv"};
    const std::string path_ = place_ / "file";
};

TEST_F(KeyValueFile, ChangesOneKeyAndKeepsTheOtherLines) {
    const char* const rows[][3] = {
        {"", "v", "k=\"v\"\n"},
        {"# a\n\n  b = c\nodd", " v ", "# a\n\n  b = c\nodd\nk=\" v \"\n"},
        {"a=1\nk=2\n#k=3\nb=4", "", "a=1\nk=\"\"\n#k=3\nb=4"},
        {"k=1\nb=2\nk=3\n", "4", "k=\"4\"\nb=2\n"},
    };
    for (const auto& [before, value, after] : rows) {
        writeFile(path_, before);
        EXPECT_EQ(set(path_, "k", value), 0) << before;
        EXPECT_EQ(readFile(path_), after) << before;
        EXPECT_TRUE(has(path_, value)) << before;
        EXPECT_FALSE(has(path_, "other")) << before;
    }
    EXPECT_FALSE(has(place_ / "missing", ""));
    const char* const refused[][2] = {{"#k", "v"},   {"k=l", "v"},  {"k\nl", "v"},
                                      {"k", "a\nb"}, {"k", "a\"b"}, {"", "v"}};
    for (const auto& [key, value] : refused) {
        EXPECT_LT(set(path_, key, value), 0) << key << value << " could not be read back";
    }
    EXPECT_EQ(readFile(path_), "k=\"4\"\nb=2\n");
    EXPECT_EQ(shell("ls /tmp/kv"), "file\n");
}

// Blanks around keys and bare values do not count; quotes keep those inside them.
TEST_F(KeyValueFile, ReadsOneValue) {
    const char* const rows[][2] = {{"k=\"v\"", "v"},
                                   {" k\t= v w", "v w"},
                                   {"k=\"  v  w \"", "  v  w "},
                                   {"#k=a", ""},
                                   {"k=a=b # c", "a=b # c"},
                                   {"k=\"\"", ""},
                                   {"k=\"a", "\"a"},
                                   {"K=d", ""},
                                   {"k=1\nk=2", "2"}};
    for (const auto& [text, value] : rows) {
        writeFile(path_, text);
        EXPECT_EQ(get(path_, "k"), value) << text;
    }
    writeFile(path_, "k=abcdefghijklmnopqrstuvwxyz");
    char small[16];
    EXPECT_EQ(VLIBCFileGetKeyValue(path_.c_str(), "k", small, sizeof small, 0), 15);
    EXPECT_STREQ(small, "abcdefghijklmno");
    EXPECT_EQ(get(place_ / "missing", "k"), "");
    EXPECT_EQ(get("/tmp/kv", "k"), "error");
}

TEST_F(KeyValueFile, KeepsTheModeAndTheLimit) {
    const mode_t mask = umask(0077);
    EXPECT_EQ(set(path_, "k", "v"), 0);
    EXPECT_EQ(shell("stat -c %a /tmp/kv/file"), "644\n");
    shell("chmod 2660 /tmp/kv/file");
    EXPECT_EQ(set(path_, "k", "w"), 0);
    EXPECT_EQ(shell("stat -c %a /tmp/kv/file"), "2660\n");
    umask(mask);

    const std::string longest = std::string(1024 * 1024 - 4, '#') + "\nk=v";
    writeFile(path_, longest);
    EXPECT_EQ(get(path_, "k"), "v");
    EXPECT_LT(set(path_, "k", "v"), 0) << "it would grow over the limit";
    EXPECT_EQ(readFile(path_), longest);
    writeFile(path_, longest + '\n');
    EXPECT_EQ(get(path_, "k"), "error");
}

TEST_F(KeyValueFile, FollowsNoLinkInASharedDirectory) {
    writeFile(place_ / "secret", "k=planted\n", 0600);
    expectUntrusted("ln -s ../secret file");
    expectUntrusted("ln -s ../missing file");
    EXPECT_EQ(readFile(place_ / "secret"), "k=planted\n");
}

TEST_F(KeyValueFile, MindsTheOwner) {
    if (!canChangeOwners()) {
        GTEST_SKIP() << "this root may not give files away";
    }
    expectUntrusted("echo k=planted >file; chown 4711 file");
    expectUntrusted("mkfifo file; chown 4711 file");
    // What cannot be replaced leaves no temporary file behind.
    shell("cd /tmp/kv/everybodys; rm file; mkdir file; chown 4711 file");
    EXPECT_LT(set("/tmp/kv/everybodys/file", "k", "v"), 0);
    EXPECT_EQ(shell("ls /tmp/kv/everybodys"), "file\n");

    shell("cd /tmp/kv; : >file; chown 4711:4712 file");
    EXPECT_EQ(set(path_, "k", "v"), 0) << "nobody else may write to this directory";
    EXPECT_EQ(shell("stat -c %u:%g /tmp/kv/file"), "4711:4712\n");
}

TEST_F(KeyValueFile, TellsTheMachinesFeatures) {
    const std::string file = "/etc.defaults/zamoinfo.conf";
    EXPECT_EQ(VLIBCSupportGet("wireless"), 0);
    writeFile(file, "wireless=\"yes\"\nfan=\"no\"\nlamp=\"yes please\"\n");
    EXPECT_EQ(VLIBCSupportGet("wireless"), 1);
    EXPECT_EQ(VLIBCSupportGet("fan") + VLIBCSupportGet("lamp"), 0);
    shell("rm " + file);
}

}  // namespace
