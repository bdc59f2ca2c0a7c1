// Services that read the environment: the temporary folder and the regional formats.
#include <cstdlib>
#include <ctime>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "platform/regional.h"
#include "platform/tempfolder.h"

using namespace fleetwright::platform;

namespace {

// Sets one variable for a scope.
class Variable
{
public:
    Variable(const char *name, const char *value)
        : m_name(name)
    {
        if (const char *old = std::getenv(name))
            m_old = old;
        if (value != nullptr)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
        ::tzset();
    }
    ~Variable()
    {
        if (m_old)
            ::setenv(m_name, m_old->c_str(), 1);
        else
            ::unsetenv(m_name);
        ::tzset();
    }

private:
    const char *m_name;
    std::optional<std::string> m_old;
};

bool localeInstalled(const char *name)
{
    try {
        std::locale locale(name);
        return true;
    } catch (const std::runtime_error &) {
        return false;
    }
}

} // namespace

TEST(EnvironmentPosix, TempFolder)
{
    {
        const Variable tmp("TMPDIR", "/var/tmp");
        EXPECT_EQ(TempFolderPath(), u"/var/tmp/");
    }
    {
        const Variable tmp("TMPDIR", "/scratch/\u00E9t\u00E9/");
        EXPECT_EQ(TempFolderPath(), u"/scratch/\u00E9t\u00E9/");
    }
    {
        const Variable tmp("TMPDIR", "");
        EXPECT_EQ(TempFolderPath(), u"/tmp/");
    }
    {
        const Variable tmp("TMPDIR", nullptr);
        EXPECT_EQ(TempFolderPath(), u"/tmp/");
    }
}

TEST(EnvironmentPosix, RegionalFormatsInTheCLocale)
{
    const Variable all("LC_ALL", "C");
    const Variable zone("TZ", "UTC0");
    EXPECT_EQ(DecimalSeparatorChar(), u'.');
    // 2009-02-13 23:31:30 UTC
    EXPECT_EQ(shortDateText(1234567890), u"02/13/09");
    EXPECT_EQ(longTimeText(1234567890), u"23:31:30");
    {
        const Variable shifted("TZ", "CET-1");
        EXPECT_EQ(shortDateText(1234567890), u"02/14/09");
        EXPECT_EQ(longTimeText(1234567890), u"00:31:30");
    }
    {
        // A locale that is not installed falls back to C rather than failing.
        const Variable bogus("LC_ALL", "xx_NOWHERE.UTF-8");
        EXPECT_EQ(DecimalSeparatorChar(), u'.');
        EXPECT_EQ(longTimeText(1234567890), u"23:31:30");
    }
}

TEST(EnvironmentPosix, RegionalFormatsInAGermanLocale)
{
    if (!localeInstalled("de_DE.UTF-8"))
        GTEST_SKIP() << "de_DE.UTF-8 is not installed";
    const Variable all("LC_ALL", "de_DE.UTF-8");
    const Variable zone("TZ", "UTC0");
    EXPECT_EQ(DecimalSeparatorChar(), u',');
    EXPECT_EQ(shortDateText(1234567890), u"13.02.2009");
    EXPECT_EQ(longTimeText(1234567890), u"23:31:30");
}
