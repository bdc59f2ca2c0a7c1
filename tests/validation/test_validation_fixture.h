#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/arraysearch.h"
#include "core/clsinifile.h"
#include "core/scripteddialogs.h"
#include "platform/codepage.h"
#include "common/tempdir.h"
#include "validation/reportwriter.h"
#include "validation/validationrun.h"

namespace fleetwright::test {

inline std::u16string u16(const std::string &ascii)
{
    return platform::fromCodePage(ascii);
}

inline std::u16string withSeparator(const std::filesystem::path &folder)
{
    return widePath(folder / "");
}

// An aircraft folder in a temporary place, with the machine a run sees: simulators, airlines, effects.
class AircraftFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
#ifdef _WIN32
        _putenv_s("SOURCE_DATE_EPOCH", "1700000000");
#else
        setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
#endif
        std::filesystem::create_directories(folder);
        std::filesystem::create_directories(dir / "tmp");
        input.folder = widePath(folder);
        input.AnalyzeOptionList.assign(23, u"1");
        input.environment.TempFolder = withSeparator(dir / "tmp");
        input.gridRowCount = 1;
    }

    void file(const std::string &relative, const std::string &bytes)
    {
        writeBytes(folder / relative, bytes);
    }
    void emptyFolder(const std::string &relative)
    {
        std::filesystem::create_directories(folder / relative);
    }
    void cfg(const std::string &text)
    {
        file("aircraft.cfg", text);
    }

    void useFs9(std::vector<std::u16string> airlines, std::vector<std::string> effects = {})
    {
        input.environment.Fs9Found = true;
        input.environment.Fs9Airlines = std::move(airlines);
        input.environment.Fs9EffectsFolder = widePath(dir / "fs9" / "Effects");
        std::filesystem::create_directories(dir / "fs9" / "Effects");
        for (const std::string &name : effects)
            writeBytes(dir / "fs9" / "Effects" / name, "fx");
    }

    void options(const std::vector<int> &on)
    {
        input.AnalyzeOptionList.assign(23, u"0");
        for (int option : on)
            input.AnalyzeOptionList[static_cast<std::size_t>(option)] = u"1";
    }

    ValidationResult run()
    {
        clsIniFile ini;
        ini.setPath(widePath(folder / "aircraft.cfg"));
        return runValidation(input, ini, dialogs);
    }

    std::u16string folderPrefix() const
    {
        return LCase(withSeparator(folder));
    }

    // The whole report a run writes for these body lines.
    std::string expectedReport(const std::vector<std::string> &body) const
    {
        const std::u16string header = reportHeaderStart() + u"Report for \"" + folderPrefix() + u"\" *";
        std::u16string text = reportStars(header) + u"\r\n" + header + u"\r\n" + reportStars(header) + u"\r\n\r\n";
        for (const std::string &line : body)
            text += (line == "RULE" ? reportRule(header) : u16(line)) + u"\r\n";
        text += u"\r\n" + reportStars(header) + u"\r\n";
        return platform::toCodePage(text);
    }

    // The body lines of the written report, without its frame.
    std::vector<std::string> bodyOf(const ValidationResult &result) const
    {
        const std::string bytes = readBytes(std::filesystem::path(result.reportPath));
        std::vector<std::string> lines;
        std::size_t start = 0;
        for (std::size_t at; (at = bytes.find("\r\n", start)) != std::string::npos; start = at + 2)
            lines.push_back(bytes.substr(start, at - start));
        if (lines.size() < 6)
            return lines;
        std::vector<std::string> body(lines.begin() + 4, lines.end() - 2);
        const std::string rule = platform::toCodePage(reportRule(platform::fromCodePage(lines[1])));
        for (std::string &line : body)
            if (line == rule)
                line = "RULE";
        return body;
    }

    TempDir dir;
    std::filesystem::path folder = dir / "Aircraft";
    ValidationInput input;
    ScriptedDialogs dialogs;
};

} // namespace fleetwright::test
