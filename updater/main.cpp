// UpdateInstaller: takes the place of a running application, replaces its folder by a new version, starts that.
// Here is the command line and nothing else; Update.h tells the road.
#include "Checks.h"
#include "Failure.h"
#include "Launch.h"
#include "Log.h"
#include "Update.h"

#include <cstdio>
#include <map>

using namespace qv;

namespace {

const char usage[] = "usage: UpdateInstaller -oldDir DIR -newDir DIR -exe NAME\n";

const char help[] = R"(
Replaces the folder of an application by the folder of its new version and starts the new version.

  -oldDir DIR   the installed folder
  -newDir DIR   the folder with the new version; it is used up. If it is empty or missing, nothing is changed
                and the installed program is started again.
  -exe NAME     the program to start: a path inside the folder
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
)";

using Arguments = std::map<std::string, std::string>;

/// The three values by their names; anything missing, doubled or unknown makes the result useless and so empty.
Arguments parsed(int count, char *words[])
{
    Arguments arguments;
    if (count != 7)
        return {};
    for (int i = 1; i < count; i += 2)
        arguments[words[i]] = words[i + 1];
    const bool complete = arguments.size() == 3 && arguments.count("-oldDir") && arguments.count("-newDir")
        && arguments.count("-exe") && !arguments["-oldDir"].empty() && staysInside(arguments["-exe"]);
    return complete ? arguments : Arguments();
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
        return Update(arguments["-oldDir"], arguments["-newDir"], arguments["-exe"]).run();
    } catch (const Failure &failure) {
        say(failure.what());
        return NeedsHelp;
    }
}
