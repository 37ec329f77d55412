#include "change/permission.h"

#include <iostream>

#include <state/answers/reports.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "system/console.h"
#include "system/elevation.h"

namespace zelkctl
{

void RequireElevation(const std::string& sAdapter)
{
    if (IsElevated())
        return;
    zelk::ErrorReport report = zelk::ReportOfMissingElevation();
    report.adapter = sAdapter;
    throw Failure(report, "Run it from an elevated prompt, or preview it with --check.");
}

void RequireConfirmation(const std::string& sAdapter, bool bConfirmed)
{
    if (bConfirmed)
        return;
    const std::string sWarning =
        "this can disconnect sessions" + (sAdapter.empty() ? "" : " through adapter " + Quoted(sAdapter));
    if (!IsTerminal(stdin) || !IsTerminal(stderr))
        throw Failure({.code = EXIT_USAGE,
                       .sReason = sWarning + "; nothing was changed",
                       .sAdapter = sAdapter,
                       .sHint = "Pass --yes to confirm."});
    std::cerr << "Warning: " << sWarning << ". Continue? [y/N] " << std::flush;
    std::string sReply;
    std::getline(std::cin, sReply);
    if (sReply != "y" && sReply != "Y" && sReply != "yes")
        throw Failure({.sReason = "not confirmed; nothing was changed"}); // no operation has run that could have failed
}

} // namespace zelkctl
