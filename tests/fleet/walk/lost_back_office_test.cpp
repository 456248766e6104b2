// The back office's session is lost between two tills of a work on the fleet, which needs it for locks alone.
#include <gtest/gtest.h>

#include "fleet/copy/send_file.h"
#include "fleet/health/health_check.h"
#include "fleet/ini/ini_runs.h"
#include "fleet/scripts/sql_script_run.h"
#include "fleet/upgrade/upgrade_run.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

class WillingShare : public FileShare {
public:
    void connect(const std::string&, const ShareLogin&) override {}
    void copy(const std::string&, const std::string&, const ShareProgress&, const int&) override {}
    void remove(const std::string&) override {}
    void disconnect(const std::string&) override {}
};

struct Operation {
    const char* name;
    void (*run)(RunParts& parts, const QString& file, const CopyTools& tools);
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

const Operation kOperations[] = {
    {"Upgrade", [](RunParts& parts, const QString& file,
                   const CopyTools& tools) { UpgradeTorvikPOS(parts, file, QStringLiteral("\\"), true, tools); }},
    {"SendFile",
     [](RunParts& parts, const QString& file, const CopyTools& tools) {
         SendFile(parts, {.AFileToCopy = file, .AResource = QStringLiteral("C$"), .TorvikPOSPath = {}}, tools);
     }},
    {"GetIni", [](RunParts& parts, const QString&, const CopyTools&) { GetTorvikPOSIni(parts); }},
    {"SendIniChanges",
     [](RunParts& parts, const QString& file, const CopyTools&) { UpgradeTorvikPOSini(parts, file); }},
    {"SqlScript", [](RunParts& parts, const QString&,
                     const CopyTools&) { ExecuteSQLScript(parts, {QStringLiteral("SELECT 1")}, false, false); }},
    {"HealthCheck", [](RunParts& parts, const QString&, const CopyTools&) { (void)CheckPosHealthStatus(parts); }},
};

class BackOfficeLostInAWork : public FleetRun, public testing::TestWithParam<Operation> {
public:
    BackOfficeLostInAWork() : FleetRun(tills({213, 213, 213})) {}
};

TEST_P(BackOfficeLostInAWork, FailsNoTill) {
    TORVIK_NEEDS_SANDBOX(chain);
    bool lost = false;
    engine.Seam.pumpMessages = [&, pump = engine.Seam.pumpMessages] {
        pump();
        if (!engine.Log->Lines().isEmpty() && engine.Log->Lines().last().contains(u"Venter i ") &&
            !std::exchange(lost, true))
            chain.backOffice().dropConnections();
    };
    GetParam().run(parts(), file(QStringLiteral("ny.fil"), "innhold"),
                   {.Share = [] { return std::make_unique<WillingShare>(); }});
    EXPECT_TRUE(lost);
    EXPECT_EQ(engine.ErrorLog->Lines(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Works, BackOfficeLostInAWork, testing::ValuesIn(kOperations),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace torvik::test
