#include "package/PackageChecks.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "console/IgnoringCase.h"
#include "console/Outcome.h"
#include "doctor/CheckList.h"
#include "installation/Components.h"
#include "installation/Installation.h"
#include "package/Inspection.h"
#include "package/SiteCheck.h"
#include "system/FolderListing.h"

namespace {

namespace fs = std::filesystem;

struct Fault {
    ExitCode code;
    std::string what;
    std::string advice;
    bool isUndecryptable = false;  // not one record belongs to the store's key
};

std::optional<Fault> contentFault(const Inspection& package) {
    if (package.records == 0)
        return Fault{ExitCode::kInstallation, "is empty", "Pack it again: tscript pack"};
    if (package.badRecords > 0)
        return Fault{ExitCode::kInstallation,
                     "line " + std::to_string(package.firstBadLine) + ": " + package.firstReason,
                     "Restore it from a backup, or pack it again from its plain text: tscript pack",
                     package.badRecords == package.records};
    if (!package.sealProblem.empty())
        return Fault{ExitCode::kInstallation, package.sealProblem,
                     "Restore it from a backup, or pack it again from its plain text: tscript pack"};
    if (package.content.scriptBody.empty())
        return Fault{ExitCode::kInstallation, "has no script", "tscript lint checks its plain text."};
    return std::nullopt;
}

std::optional<Fault> databaseFault(const std::string& name) {
    if (name.empty()) return std::nullopt;
    try {
        const SuiteDatabase& database = suiteDatabase(name);
        if (isInstalled(database)) return std::nullopt;
        return Fault{
            ExitCode::kInstallation,
            std::string("is made for ") + database.name + ", whose component is not installed",
            "Install the component (docs/configuration.md, InstalledPackages), or delete the package."};
    } catch (const Failure& failure) {
        return Fault{ExitCode::kInstallation, failure.what(), failure.advice()};
    }
}

// What a run refuses, and what lets others change a package.
std::optional<Fault> fileFault(const fs::path& file) {
    struct stat status {};
    if (lstat(file.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return std::nullopt;
    if (!S_ISREG(status.st_mode) || status.st_nlink > 1)
        return Fault{ExitCode::kInstallation, "is a link, a pipe or a file with a second name",
                     "Runs refuse it. Put a copy of the package in its place."};
    if (canStrangersChange(file.string()))
        return Fault{ExitCode::kInstallation, "can be changed by every user",
                     "Set its mode: chmod o-w " + file.string()};
    return std::nullopt;
}

std::optional<Fault> faultOf(const fs::path& file, Site& site, bool knowsComponents) {
    if (std::optional<Fault> fault = fileFault(file)) return fault;
    try {
        const Inspection package = inspectPackage(file.string());
        std::optional<Fault> fault = contentFault(package);
        if (!fault && knowsComponents) fault = databaseFault(package.content.databaseName);
        if (fault) return fault;
        const std::optional<SiteFault> foreign = siteFault(package.content, site);
        return foreign ? std::optional(Fault{ExitCode::kRefused, foreign->what, foreign->advice})
                       : std::nullopt;
    } catch (const Failure& failure) {
        return Fault{ExitCode::kInstallation, failure.what(), "Delete it, or let this user read it."};
    }
}

void addFaults(CheckList& list, const std::map<std::string, Fault>& faults) {
    for (const auto& [package, fault] : faults)
        list.addFailure("package " + package, fault.code, fault.what, fault.advice);
}

// A database usually ignores case: the runs of both packages then have one name in catalogue and journal.
void addLikeNames(CheckList& list, const std::vector<fs::path>& files) {
    std::map<std::string, std::string, IgnoringCase> known;
    for (const fs::path& file : files) {
        const std::string name = file.stem().string();
        const auto [first, isNew] = known.emplace(name, name);
        if (!isNew)
            list.addWarning("package " + name,
                            "has the name of " + first->second +
                                " in other letters; the journal does not tell their runs apart",
                            "Delete one, or pack it again under another name.");
    }
}

bool areAllUndecryptable(const std::map<std::string, Fault>& faults) {
    return std::all_of(faults.begin(), faults.end(),
                       [](const auto& entry) { return entry.second.isUndecryptable; });
}

}  // namespace

void checkPackages(CheckList& list) {
    for (const char* needed : {"store", "host name", "log folder", "key", "package folder"})
        if (list.hasFailed(needed))
            return list.addSkipped("packages", std::string("not opened without ") + needed);
    Site site;
    const bool knowsComponents = !list.hasFailed("platform type");
    const std::vector<fs::path> files = pathsIn(scriptsFolder(), ".sql");
    std::map<std::string, Fault> faults;
    for (const fs::path& file : files)
        if (std::optional<Fault> fault = faultOf(file, site, knowsComponents))
            faults.emplace(file.stem().string(), std::move(*fault));
    if (files.size() > 1 && faults.size() == files.size() && areAllUndecryptable(faults))
        return list.addFailure("packages", ExitCode::kInstallation,
                               "none of " + std::to_string(files.size()) +
                                   " can be decrypted: they were encrypted with another key",
                               "Restore the key file that they were encrypted with. With both keys: tscript "
                               "repack --old-key FILE --new-key FILE PACKAGES");
    addFaults(list, faults);
    addLikeNames(list, files);
    list.addGood("packages",
                 std::to_string(files.size() - faults.size()) + " can be decrypted and run at this site");
}
