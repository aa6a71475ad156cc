#include "ui/qdlgfile.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "ui/qapp.h"
#include "ui/qfiledialog.h"

#include <algorithm>

namespace {

constexpr int WID = 600;
constexpr int HGT = 466; // twelve entries

// What is remembered from one time to the next.
struct Remembered
{
  int x = 0, y = 0;
  std::string dir, file, filter;
};

Remembered Read(const QInfo* info, const std::string& path)
{
  Remembered r;
  if (!info)
    return r;
  r.x = info->GetInt(path + "x");
  r.y = info->GetInt(path + "y");
  info->GetString(path + "dir", r.dir);
  info->GetString(path + "file", r.file);
  info->GetString(path + "filter", r.filter);
  return r;
}

// At 0, 0 nothing is remembered yet: then in the middle.
QRect AreaAt(int x, int y)
{
  const QRect& shell = app->GetShell()->rect;
  QRect area{x, y, std::min(WID, shell.wid), std::min(HGT, shell.hgt)};
  if (x == 0 && y == 0) {
    area.x = (shell.wid - area.wid) / 2;
    area.y = (shell.hgt - area.hgt) / 2;
  }
  return area;
}

std::vector<QFileDialog::Filter> FiltersFor(const std::string& filter)
{
  const bool plain = filter.size() == 5 && filter.starts_with("*.") && filter.find_first_of("*?;!", 1) == filter.npos;
  if (!plain)
    return {{"All Files (*.*)", "*.*"}};
  std::string upper = filter.substr(2);
  for (char& c : upper)
    c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  return {{upper + " files (" + filter + ")", filter}, {"All files (*.*)", "*.*"}};
}

void RememberPosition(QInfo* info, const std::string& path, const QRect& area)
{
  if (!info || (info->GetInt(path + "x") == area.x && info->GetInt(path + "y") == area.y))
    return;
  info->SetInt(path + "x", area.x);
  info->SetInt(path + "y", area.y);
}

void RememberChoice(QInfo* info, const std::string& path, const QFileDialog& dialog)
{
  info->SetString(path + "dir", dialog.GetDirectory());
  info->SetString(path + "file", dialog.GetFile());
  info->SetString(path + "filter", dialog.GetFilter());
}

} // namespace

bool QDlgFile(std::string_view title, QInfo* info, std::string_view key, const std::string& initialDir,
              std::string* fullName, std::string* fileName, QSplit* list)
{
  if (!app || !app->GetShell())
    return false;
  const std::string path = "qfiledlg." + std::string(key) + '.';
  const Remembered before = Read(info, path);
  QLOG("initialDir: '%s'\n", initialDir.c_str());
  const std::string dir = initialDir.empty() ? before.dir : initialDir;
  QLOG("initial dir used %s\n", dir.c_str());
  const bool save = title.find("xport") != title.npos || title.find("ave") != title.npos;
  qstring workingDir;
  QCurrentDir(workingDir);

  const uint32_t flags = (save ? QFileDialog::SAVE : 0u) | (list ? QFileDialog::MULTIPLE : 0u);
  const std::string filter = before.filter.empty() ? "*.*" : before.filter;
  QFileDialog dialog(app->GetShell(), AreaAt(before.x, before.y), title, dir, filter, flags);
  dialog.SetFilters(FiltersFor(before.filter));
  dialog.SetFile(before.file);
  const bool chosen = dialog.Execute() == 1;

  RememberPosition(info, path, dialog.rect);
  if (chosen) {
    const std::string full = QPathJoin(dialog.GetDirectory(), dialog.GetFile());
    QDBG("You chose: '%s'\n", full.c_str());
    if (fileName)
      *fileName = dialog.GetFile();
    if (list) {
      *list = {dialog.GetDirectory()};
      list->insert(list->end(), dialog.GetFiles().begin(), dialog.GetFiles().end());
    }
    if (fullName)
      *fullName = full;
    if (fullName && info) {
      RememberChoice(info, path, dialog);
      if (!info->Write())
        QWARN("Can't save dialog settings for '%s'", std::string(key).c_str());
    }
    // An idle procedure may have gone elsewhere meanwhile.
    qstring now;
    QCurrentDir(now);
    if (!(now == workingDir))
      QSetCurrentDirectory(workingDir.Str());
  }
  app->ClearModifiers(); // the releases may have gone to the dialog
  return chosen;
}
