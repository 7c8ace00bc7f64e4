// What may differ in the program that calls: its descriptors, its memory, its locale.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <locale>
#include <new>

#include "tests/support/processes.h"
#include "tests/support/store.h"
#include "tests/support/systemCalls.h"
#include "zamofirewall/zamofirewall.h"

namespace {

// How many allocations succeed before all fail; negative: none fails.
long allocationsLeft = -1;

}  // namespace

__attribute__((visibility("default"))) void* operator new(std::size_t size) {
    if (allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    allocationsLeft -= allocationsLeft > 0 ? 1 : 0;
    void* const memory = std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

__attribute__((visibility("default"))) void operator delete(void* memory) noexcept {
    std::free(memory);
}

__attribute__((visibility("default"))) void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

const std::string kPath = std::string(test::kStore) + "a.json";

class JsonFiles : public testing::Test {
  protected:
    JsonFiles() { test::clearFiles(); }
};

TEST_F(JsonFiles, KeepOffTheStandardStreams) {
    EXPECT_EQ(test::inChild([] {
                  bool kept = true;
                  const auto look = [&kept] {
                      for (const char* stream :
                           {"/proc/self/fd/0", "/proc/self/fd/1", "/proc/self/fd/2"}) {
                          kept = kept && access(stream, F_OK) != 0;
                      }
                  };
                  close(0);
                  close(1);
                  close(2);
                  test::SystemCalls calls;
                  calls.onSync = look;
                  const bool written = FW::jsonFileDump(1, kPath);
                  return written && kept ? 0 : 1;
              }),
              0);
}

TEST_F(JsonFiles, LeakNoDescriptorWhenMemoryRunsOut) {
    const Json::Value document = test::json("{'a': [1, 'text', {'b': 2.5}]}");
    ASSERT_TRUE(FW::jsonFileDump(document, kPath));
    const std::size_t open = test::namesIn("/proc/self/fd").size();
    for (const bool load : {false, true}) {
        bool done = false;
        for (long count = 0; !done; ++count) {
            Json::Value value;
            allocationsLeft = count;
            try {
                done = load ? FW::jsonFileLoad(value, kPath) : FW::jsonFileDump(document, kPath);
            } catch (const std::bad_alloc&) {
            }
            allocationsLeft = -1;
            ASSERT_EQ(test::namesIn("/proc/self/fd").size(), open) << load << " " << count;
        }
    }
    EXPECT_FALSE(test::exists(kPath + ".tmp"));
}

struct Grouped : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(JsonFiles, AreTheSameInEveryLocale) {
    const std::string text =
        "{ // \"1.5 \n \"a\": [1.5, -0.25, 1.5e3, 2.5E-1, 1e2, 1234567, 1.795], /* \" */ \"b\\\\\": \"1.5\\\" 2.5\"}";
    test::writeFile(kPath, text);
    Json::Value expected;
    ASSERT_TRUE(FW::jsonFileLoad(expected, kPath));

    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Grouped));
    Json::Value read;
    EXPECT_TRUE(FW::jsonFileLoad(read, kPath));
    Json::Value damaged;
    for (const char* wrong : {"[1.5.2]", "[1.5e]", "[-.]", "[1e400]"}) {
        test::writeFile(kPath, wrong);
        EXPECT_FALSE(FW::jsonFileLoad(damaged, kPath)) << wrong;
    }
    EXPECT_TRUE(FW::jsonFileDump(read, kPath));
    const std::string name =
        FW::ZAMOFW_JSON_DB().profilePathNameGen(test::json("{'a': {'fileName': '1'}}"));
    std::locale::global(before);

    EXPECT_EQ(read, expected);
    EXPECT_EQ(name.find_first_not_of("0123456789"), std::string::npos) << name;
    EXPECT_TRUE(FW::jsonFileLoad(read, kPath));
    EXPECT_EQ(read, expected);
}

TEST_F(JsonFiles, OfTheStoreHaveNamesThatCanBeReadBack) {
    FW::ZAMOFW_JSON_DB database;
    FW::FWPROFILE profile;
    profile.name = "home";
    test::writeProfile("1.json", profile);
    // Neither a settings file with a name nor one without room for a lock file is a profile.
    test::writeFile(test::kSettings, "{\"name\": \"settings\", \"profile\": \"home\"}");
    test::writeProfile(std::string(246, 'd') + ".json", profile);
    std::vector<std::string> names;
    EXPECT_TRUE(database.profileEnum(names));
    EXPECT_EQ(names, std::vector<std::string>{"home"});
    EXPECT_TRUE(FW::ZAMOFW_PROFILE().profileRemoveServ("ssh"));
    EXPECT_EQ(test::json(test::readFile(test::kSettings)).size(), 2U);

    for (const std::string wrong :
         {"\xff", "a\xc3", "\xed\xa0\x80", "\xc0\xaf", "\xf4\x90\x80\x80"}) {
        EXPECT_FALSE(database.profileCreate(wrong)) << testing::PrintToString(wrong);
        EXPECT_FALSE(database.profileRename("home", wrong));
        profile.name = wrong;
        EXPECT_FALSE(database.profileSet("home", profile));
        Json::Value document;
        document["config_profiles"][wrong + ".json"]["name"] = "x";
        EXPECT_FALSE(database.importConfig(document));
    }
    for (const std::string& wrong :
         {std::string(), std::string("."), std::string(".."), std::string("a\0b", 3),
          std::string("a/b"), std::string(251, 'd')}) {
        Json::Value document;
        document["config_profiles"][wrong]["name"] = "x";
        EXPECT_FALSE(database.importConfig(document)) << testing::PrintToString(wrong);
    }
    EXPECT_TRUE(database.profileRename("home", "\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80"));
    names.clear();
    EXPECT_TRUE(database.profileEnum(names));
    EXPECT_EQ(names, std::vector<std::string>{"\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80"});
}

}  // namespace
