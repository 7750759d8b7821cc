// Command `rotate`: gives packages and credentials a new key.
#include <memory>

#include "commands/Commands.h"
#include "console/Console.h"
#include "installation/Installation.h"
#include "packing/KeyRotation.h"

namespace {

constexpr int kUsualGrace = 5;
constexpr int kLongestGrace = 3600;

struct RotateOptions {
    int grace = kUsualGrace;
};

ExitCode rotate(const RotateOptions& options) {
    requireStore();
    const bool isContinued = !KeyRotation::previousKey().empty();
    const KeyRotation::Result result = KeyRotation(std::chrono::seconds(options.grace)).run();
    writeNote(std::string(isContinued ? "completed the rotation" : "rotated") + " to the key " +
              result.newKey + ": " + std::to_string(result.packages) + " package(s), " +
              std::to_string(result.credentials) + " credential(s)");
    writeNote(result.previousKey + " is not used any more; delete it when no backup needs it");
    for (const std::string& package : result.unreadable)
        writeNote("tscript: left as it is, because neither key decrypts it: " + package);
    return ExitCode::kDone;
}

}  // namespace

void addRotateCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RotateOptions>();
    CLI::App* command = addCommand(
        &app, action, "rotate",
        "Create a new key for the installation and encrypt its packages and credentials with it; runs "
        "continue meanwhile, and a rotation that was cut off is completed",
        options, rotate);
    addNumber(command, "--grace", options->grace, "Seconds for which both keys stay in use at the end",
              {.type = "SECONDS", .least = 0, .most = kLongestGrace});
}
