// UpdateInstaller: takes the place of a running application, replaces its folder by a new version, starts that.
// Here is the command line and nothing else; Update.h tells the road.
#include "Checks.h"
#include "Failure.h"
#include "Launch.h"
#include "Log.h"
#include "Update.h"

#include <cstdio>
#include <map>
#include <set>
#include <string_view>

using namespace qv;

namespace {

const char usage[] = "usage: UpdateInstaller -oldDir DIR -newDir DIR -exe NAME\n";

const char help[] = R"(
Replaces the folder of an application by the folder of its new version and starts the new version.

  -oldDir DIR   the installed folder
  -newDir DIR   the folder with the new version; it is used up. If it is empty or missing, nothing is changed
                and the installed program is started again.
  -exe NAME     the program to start: a path inside the folder
  -wait SECONDS first waits for the end of standard input, which is a pipe that the application holds open as long
                as it runs; gives up after that time
  -noStart      starts no program; without a trial the new version is installed at once
  -tell         the started program finds the outcome in QV_UPDATE_RESULT: "updated", "unchanged: REASON",
                "reverted: REASON" or "unclear: REASON"
  -discard      the folder with the new version goes even if nothing could be installed
  --help        this text
  --version     the version of UpdateInstaller

Old and new folder are swapped in one step. If the new program cannot be started or fails within its first
five seconds, they are swapped back and the old program is started. Only a new program that stands this
trial costs the old version. An update that was killed is ended or undone by the next one.
As root nothing is replaced that another user owns or can write. The installed program is started all the same.
What is done is told on standard error and in the file DIR.update.log beside the installed folder.

Exit codes:
  0  the new version is installed and was started
  1  nothing was changed; the installed program was started again
  2  the command line is wrong; nothing was changed, nothing was started
  3  the new version could not be started or failed at once; the old one is back and was started again
  4  another update of the same folder is under way; nothing was changed, nothing was started
  5  the old version could not be brought back, or the installed program could not be started: see the log
  6  the application still ran when the time was up; nothing was changed, nothing was started
)";

using Arguments = std::map<std::string, std::string>;

bool isNumber(const std::string &text)
{
    return !text.empty() && text.size() < 7 && text.find_first_not_of("0123456789") == std::string::npos;
}

/// The values by their names; anything missing, doubled or unknown makes the result useless and so empty.
Arguments parsed(int count, char *words[])
{
    static const std::set<std::string_view> flags { "-noStart", "-tell", "-discard" };
    static const std::set<std::string_view> values { "-oldDir", "-newDir", "-exe", "-wait" };
    Arguments arguments;
    for (int i = 1; i < count; ++i) {
        const char *const name = words[i];
        if (flags.count(name) + values.count(name) == 0 || (values.count(name) && ++i == count)
            || !arguments.emplace(name, words[i]).second)
            return {};
    }
    const bool complete = arguments.count("-newDir") && !arguments["-oldDir"].empty() && staysInside(arguments["-exe"])
        && (!arguments.count("-wait") || isNumber(arguments["-wait"]));
    return complete ? arguments : Arguments();
}

Options optionsIn(const Arguments &arguments)
{
    Options options;
    if (const auto wait = arguments.find("-wait"); wait != arguments.end())
        options.secondsToWait = std::stoi(wait->second);
    options.starts = arguments.count("-noStart") == 0;
    options.tells = arguments.count("-tell") != 0;
    options.discards = arguments.count("-discard") != 0;
    return options;
}

} // namespace

int main(int count, char *words[])
{
    const std::string word = count == 2 ? words[1] : "";
    if (word == "--help") {
        std::printf("%s%s", usage, help);
        return Installed;
    }
    if (word == "--version") {
        std::printf("UpdateInstaller %s\n", VERSION);
        return Installed;
    }

    forgetTheCaller();
    Arguments arguments = parsed(count, words);
    if (arguments.empty()) {
        std::fputs(usage, stderr);
        return WrongUsage;
    }
    try {
        return Update(arguments["-oldDir"], arguments["-newDir"], arguments["-exe"], optionsIn(arguments)).run();
    } catch (const Failure &failure) {
        say(failure.what());
        return NeedsHelp;
    }
}
