// Linked into a test executable, this installs the locale named by PELAGRIM_TEST_LOCALE before the
// tests run, as a host would. For locales that write 0,5 for a half.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <locale>

namespace {

class LocaleEnvironment : public testing::Environment {
  void SetUp() override {
    const char* const name = std::getenv("PELAGRIM_TEST_LOCALE");
    if (name == nullptr) return;
    ASSERT_NE(std::setlocale(LC_ALL, name), nullptr) << name << " is missing";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    std::locale::global(std::locale(name));
  }
  void TearDown() override {
    if (std::getenv("PELAGRIM_TEST_LOCALE") == nullptr) return;
    EXPECT_STREQ(std::localeconv()->decimal_point, ",") << "the host's locale was not left alone";
  }
};

const auto* const g_environment = testing::AddGlobalTestEnvironment(new LocaleEnvironment);

}  // namespace
