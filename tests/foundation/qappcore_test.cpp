#include "foundation/qappcore.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::string steps; // what the procedures of a test did

void CrashStep()
{
  steps += "crash ";
}

} // namespace

TEST(QAppCore, IsTheOneOfItsProcess)
{
  EXPECT_EQ(nullptr, QAppCore::Get());
  {
    const QAppCore app("pavex");
    EXPECT_EQ(&app, QAppCore::Get());
    EXPECT_EQ("Tessel", app.GetTitle());
    EXPECT_EQ("pavex", QReports().applicationName);
    EXPECT_TRUE(app.GetExePath().ends_with("foundation_test"));
  }
  EXPECT_EQ(nullptr, QAppCore::Get());
  EXPECT_EQ("", QReports().applicationName);
}

TEST(QAppCore, ExitRunsEachProcedureOnceAndEndsTheProcess)
{
  steps.clear();
  ReportCapture reports;
  auto app = std::make_unique<QAppCore>("pavex", "title");
  app->SetExitProc([&](int status) {
    steps += "exit" + std::to_string(status) + " ";
    app->Exit(9); // from inside: nothing
  });
  app->AddCleanupProc([] { steps += "first "; });
  app->AddCleanupProc([] {
    steps += "second ";
    QAppCore::Get()->AddCleanupProc([] { steps += "third "; });
  });
  app->SetLeave([&](int status) {
    steps += "leave" + std::to_string(status);
    app.reset();
  });
  app->Exit(3);
  EXPECT_EQ("exit3 first second third leave3", steps);
  EXPECT_EQ(nullptr, QAppCore::Get());
  EXPECT_TRUE(reports.Contains("QApp: calling cleanup proc 2...\n"));
  EXPECT_TRUE(reports.Contains("  cleanup 2 returned.\n"));
}

TEST(QAppCore, ANonStoppingExitReturns)
{
  steps.clear();
  ReportCapture reports;
  QAppCore app("pavex");
  app.AddCleanupProc([] { steps += "cleanup "; });
  app.SetLeave([](int) { steps += "leave "; });
  app.SetNonStoppingExit();
  app.Exit(0);
  EXPECT_EQ("cleanup ", steps);
  app.Exit(0); // the next one ends it
  EXPECT_EQ("cleanup cleanup leave ", steps);
}

TEST(QAppCore, ProceduresHaveLimits)
{
  steps.clear();
  ReportCapture reports;
  QAppCore app("pavex");
  for (int i = 0; i < 100; ++i)
    EXPECT_TRUE(app.AddCleanupProc([] {}));
  for (int i = 0; i < 10; ++i)
    EXPECT_TRUE(app.AddCrashProc(CrashStep));
  EXPECT_EQ(0, reports.Problems());
  EXPECT_FALSE(app.AddCleanupProc([] {}));
  EXPECT_TRUE(reports.Contains("QApp::AddCleanupProc(); out of space - memory leaks WILL occur!"));
  EXPECT_FALSE(app.AddCrashProc(CrashStep));
  EXPECT_TRUE(reports.Contains("QApp::AddCrashProc(); out of space"));
  EXPECT_FALSE(app.AddCrashProc(nullptr));
  EXPECT_TRUE(reports.Contains("QApp:AddCrashProc(); func=0"));
  app.RunCrashProcs();
  EXPECT_EQ(60u, steps.size());
}

TEST(QAppCore, SettingsStayUntilTheyAreClosed)
{
  const TempDir dir;
  ReportCapture reports;
  QAppCore app("pavex");
  EXPECT_EQ(nullptr, app.GetInfo());
  EXPECT_TRUE(app.SetInfo(std::make_unique<QInfo>(dir.Write("a.ini", "x=1\n"))));
  EXPECT_FALSE(app.SetInfo(std::make_unique<QInfo>(dir.Write("b.ini", "x=2\n"))));
  EXPECT_TRUE(reports.Contains("QApp::SetInfo(); info is already open; call CloseInfo() first"));
  EXPECT_EQ(1, app.GetInfo()->GetInt("x"));
  app.GetInfo()->SetInt("x", 5);
  app.CloseInfo();
  EXPECT_EQ("x=5\n", FileText(dir.Path("a.ini")));
  EXPECT_TRUE(app.SetInfo(std::make_unique<QInfo>(dir.Path("b.ini"))));
}

TEST(QLanguage, GivesTextsOrTheirDefaults)
{
  const TempDir dir;
  ReportCapture reports;
  QAppCore app("pavex");
  EXPECT_EQ("OK", app.GetLanguage().GetString("misc.ok", "OK"));
  EXPECT_TRUE(app.SetLanguage(dir.Write("en.txt", "misc\n{\n  ok=Fine\n  cancel= No\n}\n")));
  EXPECT_EQ("Fine", app.GetLanguage().GetString("misc.ok", "OK"));
  EXPECT_EQ("No", app.GetLanguage().GetString("misc.cancel"));
  EXPECT_EQ("other", app.GetLanguage().GetString("misc.none", "other"));
  EXPECT_FALSE(app.GetLanguage().Has("misc.none"));
  EXPECT_FALSE(app.SetLanguage(dir.Path("absent.txt")));
  EXPECT_EQ("OK", app.GetLanguage().GetString("misc.ok", "OK"));
  EXPECT_EQ(0, reports.Problems());
}
