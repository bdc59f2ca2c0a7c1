#include <filesystem>
#include <system_error>

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char *argv[])
{
    // Started as notepad, the program stands in for the plain editor on Windows (test_validation_gui.cpp): it
    // copies the file it is given to opened.log in the current folder, whole or not at all.
    if (argc == 2 && std::filesystem::path(argv[0]).stem() == "notepad") {
        std::error_code error;
        std::filesystem::copy_file(argv[1], "opened.part", std::filesystem::copy_options::overwrite_existing, error);
        if (!error)
            std::filesystem::rename("opened.part", "opened.log", error);
        return error ? 1 : 0;
    }
    // Widget tests run without a display unless the caller chose a platform.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
