// Desktop integration through the freedesktop.org tools (xdg-open, xdg-mime, gtk-launch).
#include "platform/shell.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/utf8.h"

extern char **environ;

namespace fleetwright::platform {

namespace {

// Starts a program found through PATH. The child gets default signal handling and an empty signal mask,
// whatever the calling thread had; with output set, its standard output goes there and its errors nowhere.
std::optional<pid_t> spawn(const std::vector<std::string> &arguments, int output = -1)
{
    if (arguments.empty() || arguments.front().empty())
        return std::nullopt;
    std::vector<char *> argv;
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    if (output >= 0) {
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    sigset_t mask;
    sigemptyset(&mask);
    posix_spawnattr_setsigmask(&attributes, &mask);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (const int signal : {SIGPIPE, SIGCHLD, SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGUSR1, SIGUSR2})
        sigaddset(&defaults, signal);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t pid = 0;
    const int result = ::posix_spawnp(&pid, argv.front(), &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (result != 0)
        return std::nullopt;
    return pid;
}

int waitFor(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Starts a program that runs on its own; a thread collects its exit so that it leaves no zombie behind.
bool startDetached(const std::vector<std::string> &arguments)
{
    const std::optional<pid_t> pid = spawn(arguments);
    if (!pid)
        return false;
    std::thread([child = *pid] { waitFor(child); }).detach();
    return true;
}

// Runs a program to its end and returns the first line of its output, trimmed; nothing when the program
// cannot start, fails, or prints nothing.
std::optional<std::string> firstOutputLine(const std::vector<std::string> &arguments)
{
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0)
        return std::nullopt;
    ::fcntl(pipeEnds[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(pipeEnds[1], F_SETFD, FD_CLOEXEC);
    const std::optional<pid_t> pid = spawn(arguments, pipeEnds[1]);
    ::close(pipeEnds[1]);
    std::string output;
    if (pid) {
        char buffer[4096];
        for (;;) {
            const ssize_t got = ::read(pipeEnds[0], buffer, sizeof buffer);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                break;
            output.append(buffer, static_cast<std::size_t>(got));
        }
    }
    ::close(pipeEnds[0]);
    if (!pid || waitFor(*pid) != 0)
        return std::nullopt;
    const std::size_t end = output.find_first_of("\r\n");
    std::string line = output.substr(0, end);
    const std::size_t first = line.find_first_not_of(" \t");
    const std::size_t last = line.find_last_not_of(" \t");
    if (first == std::string::npos)
        return std::nullopt;
    return line.substr(first, last - first + 1);
}

// "code --wait" or "'/opt/My Editor/edit' -n": split at blanks, quotes holding a part together.
std::vector<std::string> splitCommand(std::string_view command)
{
    std::vector<std::string> parts;
    std::string part;
    bool inPart = false;
    char quote = '\0';
    for (const char ch : command) {
        if (quote != '\0') {
            if (ch == quote)
                quote = '\0';
            else
                part += ch;
        } else if (ch == '\'' || ch == '"') {
            quote = ch;
            inPart = true;
        } else if (ch == ' ' || ch == '\t' || ch == '\n') {
            if (inPart)
                parts.push_back(std::move(part));
            part.clear();
            inPart = false;
        } else {
            part += ch;
            inPart = true;
        }
    }
    if (inPart)
        parts.push_back(std::move(part));
    return parts;
}

} // namespace

bool Shell::open(const std::u16string &fileOrUrl)
{
    if (fileOrUrl.empty())
        return false;
    return startDetached({"xdg-open", toUtf8(fileOrUrl)});
}

bool Shell::openInPlainEditor(const std::u16string &file)
{
    const std::string path = toUtf8(file);
    for (const char *variable : {"VISUAL", "EDITOR"}) {
        const char *command = std::getenv(variable);
        if (command == nullptr)
            continue;
        std::vector<std::string> arguments = splitCommand(command);
        if (arguments.empty())
            continue;
        // The user named this editor; another one in its place would surprise more than a failure.
        arguments.push_back(path);
        return startDetached(arguments);
    }
    if (const std::optional<std::string> entry = firstOutputLine({"xdg-mime", "query", "default", "text/plain"})) {
        // gtk-launch hands the file to the running desktop and ends at once, so its verdict can be awaited.
        const std::optional<pid_t> launcher = spawn({"gtk-launch", *entry, path});
        if (launcher && waitFor(*launcher) == 0)
            return true;
    }
    return startDetached({"xdg-open", path});
}

std::optional<std::u16string> Shell::findExecutable(const std::u16string &document)
{
    const std::string path = toUtf8(document);
    std::error_code error;
    if (path.empty() || !std::filesystem::exists(std::filesystem::path(path), error))
        return std::nullopt;
    std::optional<std::string> type = firstOutputLine({"xdg-mime", "query", "filetype", path});
    if (!type)
        return std::nullopt;
    // Some back ends answer "text/plain; charset=us-ascii".
    type = type->substr(0, type->find(';'));
    const std::optional<std::string> entry = firstOutputLine({"xdg-mime", "query", "default", *type});
    if (!entry)
        return std::nullopt;
    return fromUtf8(*entry);
}

} // namespace fleetwright::platform
