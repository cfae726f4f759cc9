#include "program/fleet_command.h"

#include "os/module.h"
#include "vorhost/run/run_failure.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

namespace NVORHOST {
namespace {

constexpr char fleetProgram[] = "noxinfo-fleet";

}  // namespace

void ExecuteFleet(const TFleetWords& words) {
    std::vector<std::string> arguments{fleetProgram};
    arguments.insert(arguments.end(), words.words.begin(), words.words.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    (void)::execv(FindBesideProgram(fleetProgram).c_str(), pointers.data());  // returns only if it fails
    if (errno == ENOENT) {
        (void)::execvp(fleetProgram, pointers.data());
    }
    throw TRunFailure(errno == ENOENT
                          ? std::string("noxinfo-fleet is not installed; it is in the package noxinfo-fleet")
                          : "cannot execute noxinfo-fleet: " + std::generic_category().message(errno));
}

}  // namespace NVORHOST
