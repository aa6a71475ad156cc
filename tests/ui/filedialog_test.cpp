#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "ui/qdlgfile.h"
#include "ui/qfiledialog.h"
#include "ui/qfilelistbox.h"
#include "ui/uifixture.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> Names(const QFileList& list)
{
  std::vector<std::string> names;
  for (const QFileEntry& entry : list.Entries())
    names.push_back(entry.name + (entry.isDirectory ? "/" : ""));
  return names;
}

TEST(QFileList, SortsAsAPersonExpects)
{
  // Each belongs before the next.
  const std::vector<std::vector<const char*>> rows = {
      {"a", "B", "c"},
      {"part2", "part10", "part99999999999999999999", "part100000000000000000000"},
      {"lap7", "lap08", "Lap9", "lap010"},
      {"Ecole",
       "\xC3\xA9"
       "cole2",
       "Edge", "e\xCC\x81toile", "Zoo",
       "\xC5\xBC"
       "u"},
      {"road", "road.ase", "road1.ase"},
      {"\xCE\x91", "\xCE\xB2", "\xCE\x93"}, // alpha, beta, gamma
  };
  for (const auto& row : rows)
    for (size_t i = 0; i < row.size(); ++i)
      for (size_t j = 0; j < row.size(); ++j) {
        SCOPED_TRACE(std::string(row[i]) + " and " + row[j]);
        EXPECT_EQ(i <=> j, QCompareNatural(QNaturalKey(row[i]), QNaturalKey(row[j])));
      }
}

TEST(QFileList, HoldsAllDirectoriesAndTheFilesThatPass)
{
  TempDir dir;
  for (const char* name : {"b10.ase", "b2.ASE", "a.txt", ".hidden.ase", "noextension", "zebra.ase"})
    dir.Write(name, "1234");
  for (const char* name : {"sub2", "Sub10", ".git"})
    fs::create_directory(dir.Path(name));
  fs::create_directory_symlink("sub2", dir.Path("link"));
  fs::create_symlink("nowhere", dir.Path("dangling.ase"));
  const struct
  {
    const char* filter;
    std::vector<std::string> files;
  } cases[] = {
      {"*.ase", {"b2.ASE", "b10.ase", "dangling.ase", "zebra.ase"}},
      {"*.txt; b2*", {"a.txt", "b2.ASE"}},
      {"*.*", {"a.txt", "b2.ASE", "b10.ase", "dangling.ase", "noextension", "zebra.ase"}},
      {"", {"a.txt", "b2.ASE", "b10.ase", "dangling.ase", "noextension", "zebra.ase"}},
      {"*.dof", {}},
  };
  QFileList list;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.filter);
    std::vector<std::string> expected = {"../", "link/", "sub2/", "Sub10/"};
    expected.insert(expected.end(), c.files.begin(), c.files.end());
    EXPECT_TRUE(list.Read(dir.Path(), c.filter));
    EXPECT_EQ(expected, Names(list));
  }
  EXPECT_TRUE(list.Read(dir.Path(), ".*"));
  EXPECT_EQ((std::vector<std::string>{"../", ".git/", "link/", "sub2/", "Sub10/", ".hidden.ase"}), Names(list));
  EXPECT_EQ(4, list.Entries().back().size);
  EXPECT_EQ(3, list.Find("sub2"));
  EXPECT_EQ(-1, list.Find("SUB2"));

  ReportCapture reports;
  EXPECT_FALSE(list.Read(dir.Path() + "/gone", "*"));
  EXPECT_EQ((std::vector<std::string>{"../"}), Names(list));
  EXPECT_TRUE(reports.Contains("Can't read directory"));
}

TEST(QFileList, FindsTheNearestDirectoryThatExists)
{
  TempDir dir;
  dir.Write("file", "");
  const std::string here = fs::canonical(dir.Path()).string();
  for (const char* below : {"", "/", "/gone", "/gone/further/", "/file", "/gone/..", "/."})
    EXPECT_EQ(here, QNearestDirectory(here + below)) << below;
  EXPECT_EQ("/", QNearestDirectory("/no-such-directory/at/all"));
  EXPECT_EQ(fs::current_path().string(), QNearestDirectory(""));
  EXPECT_EQ(fs::current_path().string(), QNearestDirectory("."));
}

// A directory with models in it, and a dialog that shows it.
class FileDialogTest : public UiTest
{
protected:
  using Step = std::function<void()>;
  FileDialogTest()
  {
    for (const char* name : {"models/b10.ase", "models/b2.ase", "models/notes.txt", "models/old/deep.ase", "top.ase"})
      dir.Write(name, "1234");
    top = fs::canonical(dir.Path()).string();
    models = top + "/models";
  }
  // Executes a dialog on the models and takes the steps, each when what came before is done. What is still open then
  // is cancelled.
  int Work(uint32_t flags, const std::vector<Step>& steps)
  {
    dialog = std::make_unique<QFileDialog>(Shell(), QRect{100, 60, 600, 460}, "Models", models, "*.ase", flags);
    dialog->SetFilters({{"ASE files (*.ase)", "*.ase"}, {"All files (*.*)", "*.*"}});
    ended = false;
    for (const Step& step : steps)
      display->Then([this, step] {
        ASSERT_FALSE(ended);
        step();
      });
    display->Then([this] {
      if (!ended)
        display->Key(QKEY_ESC);
    });
    const int answer = dialog->Execute();
    ended = true;
    Run();
    return answer;
  }
  void ClickEntry(const char* name, int times = 1)
  {
    const QFileListBox& list = dialog->GetList();
    const QRect item = list.EntryRect(Index(name));
    display->Move(list.RootRect().x + item.x + 20, list.RootRect().y + item.y + item.hgt / 2);
    for (int i = 0; i < times; ++i) {
      display->ButtonDown(1);
      display->ButtonUp(1);
    }
  }
  int Index(const char* name)
  {
    QFileList list;
    EXPECT_TRUE(list.Read(dialog->GetDirectory(), dialog->GetFilter()));
    return list.Find(name);
  }
  void ClickButton(const char* caption) { display->ClickOn(*Manager().FindVisible("QButton", caption)); }
  void Fill(QEdit& edit, const std::string& text)
  {
    Manager().SetKeyboardFocus(&edit);
    edit.SetText(text);
    display->Key(QKEY_ENTER);
  }
  std::string Selected() const
  {
    const int i = dialog->GetList().GetFirstSelected();
    QFileList list;
    EXPECT_TRUE(list.Read(dialog->GetDirectory(), dialog->GetFilter()));
    return i < 0 ? "" : list.Entries()[static_cast<size_t>(i)].name;
  }

  TempDir dir;
  std::string models, top;
  std::unique_ptr<QFileDialog> dialog;
  bool ended = false;
};

TEST_F(FileDialogTest, AFileIsChosenByMouseKeyboardAndName)
{
  const struct
  {
    const char* what;
    std::vector<Step> steps;
    int result;
    std::string file; // below the top directory
  } cases[] = {
      {"selected, Open", {[&] { ClickEntry("b10.ase"); }, [&] { ClickButton("Open"); }}, 1, "models/b10.ase"},
      {"double click", {[&] { ClickEntry("b2.ase", 2); }}, 1, "models/b2.ase"},
      {"into a directory and a double click there",
       {[&] { ClickEntry("old"); }, [&] { display->now += 1000; }, [&] { ClickEntry("deep.ase", 2); }},
       1,
       "models/old/deep.ase"},
      {"double click on a directory stays in it", {[&] { ClickEntry("old", 2); }}, 2, ""},
      {"arrows and Enter",
       {[&] {
         for (int i = 0; i < 2; ++i)
           display->Key(QKEY_DOWN); // "..", "old"
         display->Key(QKEY_ENTER);
         for (int i = 0; i < 2; ++i)
           display->Key(QKEY_DOWN);
         display->Key(QKEY_ENTER);
       }},
       1,
       "models/old/deep.ase"},
      {"Backspace goes to the parent",
       {[&] {
         display->Key(QKEY_BACKSPACE);
         display->Key(QKEY_DOWN); // from "models" on
         display->Key(QKEY_ENTER);
       }},
       1,
       "top.ase"},
      {"a typed name", {[&] { Fill(dialog->GetFileEdit(), " b2.ase "); }}, 1, "models/b2.ase"},
      {"a typed relative path", {[&] { Fill(dialog->GetFileEdit(), "../top.ase"); }}, 1, "top.ase"},
      {"a typed absolute path", {[&] { Fill(dialog->GetFileEdit(), top + "/top.ase"); }}, 1, "top.ase"},
      {"a typed directory, then a name",
       {[&] { Fill(dialog->GetFileEdit(), "old/"); }, [&] { Fill(dialog->GetFileEdit(), "deep.ase"); }},
       1,
       "models/old/deep.ase"},
      {"a name that isn't there, then Cancel",
       {[&] { Fill(dialog->GetFileEdit(), "gone.ase"); }, [&] { display->Key(QKEY_ENTER); }, // the message
        [&] { ClickButton("Cancel"); }},
       2,
       ""},
      {"another directory is typed and not confirmed",
       {[&] {
         dialog->GetDirectoryEdit().SetText(top);
         dialog->GetFileEdit().SetText("top.ase");
         ClickButton("Open");
       }},
       1,
       "top.ase"},
      {"Escape", {[&] { display->Key(QKEY_ESC); }}, 2, ""},
      {"closing the main window", {[&] { display->CloseWindow(); }}, 2, ""},
      {"its close button", {[&] { ClickButton("x"); }}, 2, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    display->now += 1000;
    EXPECT_EQ(c.result, Work(0, c.steps));
    if (c.result == 1) {
      EXPECT_EQ(top + '/' + c.file, dialog->GetDirectory() + '/' + dialog->GetFile());
    }
    EXPECT_TRUE(exits.empty());
    dialog.reset();
  }
}

TEST_F(FileDialogTest, TheParentSelectsWhereOneComesFrom)
{
  for (int i = 0; i < 100; ++i)
    fs::create_directory(dir.Path("before" + std::to_string(i)));
  Work(0, {[&] { ClickButton("Parent"); },
           [&] {
             EXPECT_EQ(top, dialog->GetDirectory());
             EXPECT_EQ(top, dialog->GetDirectoryEdit().GetText());
             EXPECT_EQ("models", Selected());
             const QRect item = dialog->GetList().EntryRect(Index("models"));
             EXPECT_GE(item.y, 0);
             EXPECT_LE(item.y + item.hgt, dialog->GetList().rect.hgt);
           }});
}

TEST_F(FileDialogTest, FieldsChangeDirectoryAndFilter)
{
  const InDirectory working(top);
  const struct
  {
    const char* what;
    Step act;
    std::string directory;
    const char* filter;
    int count; // of entries
  } cases[] = {
      {"directory", [&] { Fill(dialog->GetDirectoryEdit(), models + "/old"); }, models + "/old", "*.ase", 2},
      {"no directory", [&] { Fill(dialog->GetDirectoryEdit(), ""); }, top, "*.ase", 3},
      {"the working directory", [&] { Fill(dialog->GetDirectoryEdit(), "."); }, top, "*.ase", 3},
      {"a directory that isn't there", [&] { Fill(dialog->GetDirectoryEdit(), models + "/x/y"); }, models, "*.ase", 4},
      {"filter", [&] { Fill(dialog->GetFilterEdit(), "*.txt;b2*"); }, models, "*.txt;b2*", 4},
      {"a pattern for a file", [&] { Fill(dialog->GetFileEdit(), "../t*"); }, top, "t*", 3},
      {"the next filter of the list",
       [&] {
         Manager().SetKeyboardFocus(&dialog->GetFilterEdit());
         display->Key(QKEY_DOWN);
       },
       models, "*.*", 5},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Work(0, {c.act, [&] {
               EXPECT_EQ(c.directory, dialog->GetDirectory());
               EXPECT_EQ(c.filter, dialog->GetFilter());
               EXPECT_EQ(c.filter, dialog->GetFilterEdit().GetText());
               EXPECT_EQ(c.count, dialog->GetList().GetItemCount());
               if (std::string_view(c.what).find("directory") != std::string_view::npos) {
                 EXPECT_EQ(&dialog->GetFileEdit(), Manager().GetFocus());
               }
             }});
    dialog.reset();
  }
}

TEST_F(FileDialogTest, SeveralFilesAreTakenTogether)
{
  const auto both = [&] {
    ClickEntry("b2.ase");
    ClickEntry("b10.ase");
  };
  EXPECT_EQ(1, Work(QFileDialog::MULTIPLE, {both, [&] { ClickButton("Open"); }}));
  EXPECT_EQ((std::vector<std::string>{"b2.ase", "b10.ase"}), dialog->GetFiles());
  EXPECT_EQ(models + "/b2.ase", dialog->GetDirectory() + '/' + dialog->GetFile());
  dialog.reset();
  // What is typed afterwards counts more.
  EXPECT_EQ(1, Work(QFileDialog::MULTIPLE, {both, [&] { Fill(dialog->GetFileEdit(), "notes.txt"); }}));
  EXPECT_EQ((std::vector<std::string>{"notes.txt"}), dialog->GetFiles());
  dialog.reset();
  EXPECT_EQ(2, Work(QFileDialog::MULTIPLE, {both, [&] { ClickEntry("old"); }, [&] { ClickButton("Open"); }}));
}

TEST_F(FileDialogTest, SavingAsksBeforeAFileIsReplaced)
{
  const struct
  {
    const char* what;
    std::vector<Step> steps;
    int result;
  } cases[] = {
      {"a new one", {[&] { Fill(dialog->GetFileEdit(), "new.ase"); }}, 1},
      {"replaced", {[&] { Fill(dialog->GetFileEdit(), "b2.ase"); }, [&] { ClickButton("Replace"); }}, 1},
      {"not replaced", {[&] { Fill(dialog->GetFileEdit(), "b2.ase"); }, [&] { display->Key(QKEY_ESC); }}, 2},
      {"nowhere", {[&] { Fill(dialog->GetFileEdit(), "x/new.ase"); }, [&] { display->Key(QKEY_ENTER); }}, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.result, Work(QFileDialog::SAVE, c.steps));
    dialog.reset();
  }
}

TEST_F(FileDialogTest, TheTitleOfTheSelectorTellsItsDirection)
{
  const struct
  {
    const char* title;
    const char* button;
  } cases[] = {
      {"Export model", "Save"}, {"Save as", "Save"}, {"Cut ASE apart", "Open"}, {"Import DOF model...", "Open"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.title);
    display->Then([&] {
      EXPECT_NE(nullptr, Manager().FindVisible("QButton", c.button));
      display->KeyDown(QKEY_ALT_KEY); // and its release goes elsewhere
      ClickButton("Cancel");
    });
    std::string full = "as before";
    EXPECT_FALSE(QDlgFile(c.title, nullptr, "key", models, &full, nullptr));
    EXPECT_EQ("as before", full);
    EXPECT_EQ(0, application->GetModifiers());
  }
}

TEST_F(FileDialogTest, TheSelectorRemembersWhatWasChosen)
{
  const std::string settings = dir.Write("settings.ini", "qfiledlg\n{\n  cutase\n  {\n    dir=" + models +
                                                             "/gone\n    file=b2.ase\n    filter=*.ase\n  }\n}\n");
  std::string full, name;
  {
    QInfo info(settings);
    display->Then([&] {
      // In what remains of the directory.
      ASSERT_NE(nullptr, Manager().FindVisible("QEdit", models));
      Manager().OpenDialog()->Move(20, 30);
      Manager().SetKeyboardFocus(Manager().FindVisible("QEdit", "b2.ase"));
      Manager().GetFocus()->SetText("old/deep.ase");
      display->Key(QKEY_ENTER);
    });
    EXPECT_TRUE(QDlgFile("Cut ASE apart", &info, "cutase", "", &full, &name));
  }
  EXPECT_EQ(models + "/old/deep.ase", full);
  EXPECT_EQ("deep.ase", name);
  QInfo info(settings);
  display->Then([&] {
    EXPECT_EQ((QRect{20, 30, 600, 466}), Manager().OpenDialog()->RootRect());
    EXPECT_NE(nullptr, Manager().FindVisible("QEdit", models + "/old"));
    EXPECT_NE(nullptr, Manager().FindVisible("QEdit", "*.ase"));
    display->Key(QKEY_ENTER); // the file of last time is selected
  });
  EXPECT_TRUE(QDlgFile("Cut ASE apart", &info, "cutase", "", nullptr, &name));
  EXPECT_EQ("deep.ase", name);

  // Settings that can't be kept don't spoil the choice.
  ReportCapture reports;
  QInfo lost(dir.Path("no/such/directory/settings.ini"));
  QSplit list;
  display->Then([&] {
    Manager().SetKeyboardFocus(Manager().FindVisible("QEdit", ""));
    Manager().GetFocus()->SetText("b2.ase");
    display->Key(QKEY_ENTER);
  });
  EXPECT_TRUE(QDlgFile("Cut ASE apart", &lost, "cutase", models, &full, nullptr, &list));
  EXPECT_EQ((QSplit{models, "b2.ase"}), list);
  EXPECT_TRUE(reports.Contains("Can't save dialog settings for 'cutase'"));
}

} // namespace
