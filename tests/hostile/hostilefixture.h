#pragma once

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/clsinifile.h"
#include "core/runtimeerror.h"
#include "core/scripteddialogs.h"
#include "folderview/folderload.h"
#include "hostilefolders.h"
#include "common/tempdir.h"

namespace fleetwright::test {

// One hostile case per test: a fresh copy of its folder in a library of its own, the state of the whole
// library taken before the operation, and the files the operation may change named by each test.
class Hostile : public ::testing::TestWithParam<std::string>
{
protected:
    void SetUp() override
    {
        const auto &cases = hostileCases();
        const auto found =
            std::find_if(cases.begin(), cases.end(), [](const HostileCase &c) { return c.name == GetParam(); });
        ASSERT_NE(found, cases.end());
#ifdef _WIN32
        if (found->needsSymbolicLinks)
            GTEST_SKIP() << "symbolic links need an administrator on Windows";
        if (found->needsLongPaths)
            GTEST_SKIP() << "deeper than Windows' path length allows";
#endif
        folder = copyCase(GetParam(), dir.path());
        library = folder.parent_path();
        before = folderState(library);
    }

    bool is(const char *name) const
    {
        return GetParam() == name;
    }
    std::u16string wideFolder() const
    {
        return widePath(folder);
    }

    // The folder load as the folder browser's change runs it.
    FolderLoadResult load(clsIniFile &ini)
    {
        FolderLoadInput input;
        input.folder = wideFolder();
        FolderLoadResult result;
        try {
            readAircraftFolder(input, ini, result);
        } catch (const RuntimeError &error) {
            loadFault = error;
        }
        return result;
    }

    // Fails the test for every entry of the library that changed, other than those named (relative to the
    // case folder, "/" between parts).
    void expectOnlyChanged(const std::vector<std::string> &allowed, const std::string &operation)
    {
        for (const std::string &entry : changedEntries(before, folderState(library))) {
            const std::string relative = entry.substr(std::min(entry.size(), GetParam().size() + 1));
            EXPECT_NE(std::find(allowed.begin(), allowed.end(), relative), allowed.end())
                << operation << " changed " << entry;
        }
    }

    TempDir dir;
    std::filesystem::path folder;
    std::filesystem::path library;
    FolderState before;
    ScriptedDialogs dialogs;
    std::optional<RuntimeError> loadFault;
};

// Test names are the case names.
inline std::vector<std::string> hostileCaseNames()
{
    std::vector<std::string> names;
    for (const HostileCase &hostile : hostileCases())
        names.push_back(hostile.name);
    return names;
}

inline std::string caseName(const ::testing::TestParamInfo<std::string> &info)
{
    return info.param;
}

} // namespace fleetwright::test
