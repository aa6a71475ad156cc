#include "ui/qfiledialog.h"

#include "foundation/qfilename.h"
#include "ui/qapp.h"
#include "ui/qfilelistbox.h"
#include "ui/qmessagebox.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr int MARGIN = 10;
constexpr int LABEL_WID = 70;
constexpr int ROW = 30; // from one field to the next
constexpr int DIRECTORY_Y = 36;
constexpr int HEADER_Y = DIRECTORY_Y + ROW + 4;
constexpr int LIST_Y = HEADER_Y + 18;
constexpr int STATUS_WID = 170;
constexpr size_t MOST_BYTES = 4096; // of a path

// From the lower edge up: buttons, filter, file.
int FilterY(const QRect& area)
{
  return area.hgt - 50 - ROW - 4;
}

QRect LabelRect(int y)
{
  return {MARGIN, y + 3, LABEL_WID, 20};
}

QRect EditRect(const QRect& area, int y, int right = MARGIN)
{
  const int x = MARGIN + LABEL_WID;
  return {x, y, area.wid - x - right, 24};
}

QRect ListRect(const QRect& area)
{
  return {MARGIN, LIST_Y, area.wid - 2 * MARGIN, FilterY(area) - ROW - 8 - LIST_Y};
}

QRect ColumnRect(const QRect& area, int right, int wid)
{
  return {area.wid - MARGIN - 2 - QScrollBar::THICKNESS - 6 - right, HEADER_Y, wid, 16};
}

QRect ButtonRect(const QRect& area, int x)
{
  return {x, area.hgt - 50, 100, 40};
}

std::string Trimmed(std::string text)
{
  text.erase(0, text.find_first_not_of(' '));
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

bool IsPattern(std::string_view name)
{
  return name.find_first_of("*?") != name.npos;
}

// What several chosen files look like in the field.
std::string Quoted(const std::vector<std::string>& names)
{
  std::string text;
  for (const std::string& name : names)
    text += (text.empty() ? "\"" : " \"") + name + '"';
  return text;
}

} // namespace

QFileDialog::QFileDialog(QWindow* owner, const QRect& area, std::string_view title, const std::string& startDirectory,
                         std::string_view pattern, uint32_t wanted) :
    QDialog(owner, area, title),
    fileFlags(wanted), filter(pattern), directoryLabel(this, LabelRect(DIRECTORY_Y), "Directory"),
    directoryEdit(this, EditRect(area, DIRECTORY_Y), MOST_BYTES),
    nameLabel(this, {MARGIN + 7, HEADER_Y, 100, 16}, "Name"),
    sizeLabel(this, ColumnRect(area, QFileListBox::DATE_WID + QFileListBox::SIZE_WID, QFileListBox::SIZE_WID), "Size",
              QAlign::RIGHT),
    dateLabel(this, ColumnRect(area, QFileListBox::DATE_WID, QFileListBox::DATE_WID), "Changed", QAlign::RIGHT),
    list(std::make_unique<QFileListBox>(this, ListRect(area), entries,
                                        wanted & MULTIPLE ? static_cast<uint32_t>(QListBox::MULTI_SELECT) : 0u)),
    fileLabel(this, LabelRect(FilterY(area) - ROW), "File"),
    fileEdit(this, EditRect(area, FilterY(area) - ROW), MOST_BYTES),
    filterLabel(this, LabelRect(FilterY(area)), "Filter"),
    filterEdit(this, EditRect(area, FilterY(area), MARGIN + STATUS_WID), MOST_BYTES, 0, pattern),
    status(this, {area.wid - MARGIN - STATUS_WID + 10, FilterY(area) + 3, STATUS_WID - 10, 20}, {}),
    open(this, ButtonRect(area, MARGIN), wanted & SAVE ? "Save" : "Open"),
    parentButton(this, ButtonRect(area, (area.wid - 100) / 2), "Parent"),
    cancel(this, ButtonRect(area, area.wid - 110), app->GetText("misc.cancel", "Cancel"))
{
  directoryEdit.SetName("Directory");
  fileEdit.SetName("File");
  filterEdit.SetName("Filter");
  cancel.SetShortcut(QKEY_ESC);
  list->onActivate = [this] { ActivateEntry(); };
  list->onParent = [this] { HandleClick(&parentButton); };
  EnterDirectory(startDirectory);
}

QFileDialog::~QFileDialog() = default;

void QFileDialog::SetFile(const std::string& name)
{
  const int i = name.empty() ? -1 : entries.Find(name);
  // A file that is gone can be written again, but not opened.
  if (i < 0 && !(fileFlags & SAVE))
    return;
  fileEdit.SetText(name);
  if (i < 0)
    return;
  list->Select(i, true);
  list->SetItemVisible(i);
}

int QFileDialog::Execute()
{
  result = -1;
  QWindowManager* wm = app->GetWindowManager();
  if (fileFlags & SAVE) {
    wm->SetKeyboardFocus(&fileEdit);
    fileEdit.SelectAll();
  } else {
    wm->SetKeyboardFocus(list.get());
  }
  return RunModal([this](QEvent* event) { HandleEvent(event); }, result);
}

bool QFileDialog::Event(QEvent* event)
{
  const int key = event->type == QEvent::KEYPRESS ? QKeyOf(event->n) : 0;
  if (event->win == &filterEdit && (key == QKEY_UP || key == QKEY_DOWN)) {
    NextFilter(key == QKEY_UP ? -1 : 1);
    return true;
  }
  // A field that is reached by key is typed over; the pointer sets the cursor itself.
  if (event->type == QEvent::FOCUSIN && !(app->GetMouseButtons() & 1u << 1))
    for (QEdit* edit : {&directoryEdit, &fileEdit, &filterEdit})
      if (event->win == edit)
        edit->SelectAll();
  return QDialog::Event(event);
}

void QFileDialog::HandleEvent(QEvent* event)
{
  if (event->type == QEvent::CLOSE)
    result = 2;
  else if (event->type == QEvent::CLICK)
    HandleClick(event->win);
}

void QFileDialog::HandleClick(const QWindow* from)
{
  if (from == &cancel)
    result = 2;
  else if (from == &open || from == &fileEdit)
    Accept();
  else if (from == &parentButton)
    EnterEntry(entries.Entries().front());
  else if (from == list.get())
    EntrySelected();
  else if (from == &filterEdit)
    UseFilter(filterEdit.GetText());
  else if (from == &directoryEdit) {
    EnterTypedDirectory();
    app->GetWindowManager()->SetKeyboardFocus(&fileEdit);
  }
}

const QFileEntry* QFileDialog::SelectedEntry() const
{
  const int i = list->GetFirstSelected();
  return i >= 0 && i < static_cast<int>(entries.Entries().size()) ? &entries.Entries()[static_cast<size_t>(i)]
                                                                  : nullptr;
}

void QFileDialog::EntrySelected()
{
  std::vector<std::string> names;
  const QFileEntry* entered = nullptr;
  for (int i = list->GetFirstSelected(); i >= 0; i = list->GetNextSelected(i)) {
    const QFileEntry& entry = entries.Entries()[static_cast<size_t>(i)];
    if (entry.isDirectory)
      entered = &entry;
    else
      names.push_back(entry.name);
  }
  if (entered && list->WasPointedAt()) {
    list->IgnoreDoubleClick();
    EnterEntry(*entered);
    return;
  }
  files = std::move(names);
  const std::string text = files.size() == 1 ? files.front() : Quoted(files);
  const bool keeps = files.empty() && fileFlags & SAVE; // the name for the file is still wanted
  if (!keeps && text != fileEdit.GetText())
    fileEdit.SetText(text);
}

void QFileDialog::ActivateEntry()
{
  const QFileEntry* entry = SelectedEntry();
  if (!entry)
    Accept();
  else if (entry->isDirectory)
    EnterEntry(*entry);
  else {
    EntrySelected();
    Accept();
  }
}

void QFileDialog::EnterEntry(const QFileEntry& entry)
{
  if (entry.name == "..") {
    const std::string from = QFileBase(directory.c_str());
    EnterDirectory(QPathJoin(directory, ".."), from);
  } else {
    EnterDirectory(QPathJoin(directory, entry.name));
  }
}

void QFileDialog::EnterDirectory(const std::string& path, std::string_view select)
{
  directory = QNearestDirectory(path);
  directoryEdit.SetText(directory);
  if (!(fileFlags & SAVE))
    fileEdit.SetText({});
  ReadDirectory(select);
}

// Relative to what is shown, or else to the working directory; "." is the latter.
void QFileDialog::EnterTypedDirectory()
{
  const std::string text = Trimmed(directoryEdit.GetText());
  const bool working = text.empty() || text == "." || (text[0] != '~' && !QDirectoryExists(Resolve(text)));
  EnterDirectory(working ? text : Resolve(text));
}

void QFileDialog::ReadDirectory(std::string_view select)
{
  files.clear();
  const bool readable = entries.Read(directory, filter);
  list->Refill();
  const int found = select.empty() ? -1 : entries.Find(select);
  if (found >= 0) {
    list->Select(found, true);
    list->SetItemVisible(found);
  }
  const auto count = std::count_if(entries.Entries().begin(), entries.Entries().end(),
                                   [](const QFileEntry& e) { return !e.isDirectory; });
  status.SetText(!readable ? "Can't be read" : count == 1 ? "1 file" : std::to_string(count) + " files");
}

void QFileDialog::UseFilter(const std::string& pattern)
{
  filter = Trimmed(pattern);
  filterEdit.SetText(filter);
  ReadDirectory({});
}

void QFileDialog::NextFilter(int step)
{
  if (filters.empty())
    return;
  const auto at = std::find_if(filters.begin(), filters.end(), [this](const Filter& f) { return f.pattern == filter; });
  const int count = static_cast<int>(filters.size());
  const int now = at == filters.end() ? (step > 0 ? -1 : 0) : static_cast<int>(at - filters.begin());
  UseFilter(filters[static_cast<size_t>((now + step + count) % count)].pattern);
}

std::string QFileDialog::Resolve(const std::string& text) const
{
  std::string typed = text;
  const char* home = std::getenv("HOME");
  if (home && (typed == "~" || typed.starts_with("~/")))
    typed = home + typed.substr(1);
  std::string path = (fs::path(directory) / typed).lexically_normal().string();
  while (path.size() > 1 && path.ends_with('/'))
    path.pop_back();
  return path;
}

void QFileDialog::Accept()
{
  if (Trimmed(directoryEdit.GetText()) != directory) {
    const std::string typed = fileEdit.GetText();
    EnterTypedDirectory();
    fileEdit.SetText(typed);
  }
  const std::string text = Trimmed(fileEdit.GetText());
  if (files.size() > 1 && text == Quoted(files)) {
    Take(directory, files);
    return;
  }
  if (!text.empty())
    AcceptPath(Resolve(text));
  else if (const QFileEntry* entry = SelectedEntry(); entry && entry->isDirectory)
    EnterEntry(*entry);
}

void QFileDialog::AcceptPath(const std::string& path)
{
  const fs::path whole(path);
  const std::string dir = whole.parent_path().string();
  const std::string name = whole.filename().string();
  std::error_code error;
  if (fs::is_directory(whole, error)) {
    fileEdit.SetText({});
    EnterDirectory(path);
  } else if (!fs::is_directory(dir, error)) {
    Ask("Error", "There is no directory " + dir, 1);
  } else if (const bool exists = fs::exists(whole, error); !exists && IsPattern(name)) {
    fileEdit.SetText({});
    filter = name;
    filterEdit.SetText(filter);
    EnterDirectory(dir);
  } else if (!(fileFlags & SAVE) && !exists) {
    Ask("Error", "There is no file " + path, 1);
  } else if (!(fileFlags & SAVE) || !exists ||
             Ask("Replace file", name + " exists already. Replace it?", 0, "Replace") == 1) {
    Take(dir, {name});
  }
}

void QFileDialog::Take(const std::string& dir, std::vector<std::string> names)
{
  directory = dir;
  files = std::move(names);
  file = files.front();
  result = 1;
}

int QFileDialog::Ask(const char* title, const std::string& text, int style, const char* okText)
{
  const QRect area{rect.x + (rect.wid - 360) / 2, rect.y + (rect.hgt - 160) / 2, 360, 160};
  return QMessageBox(title, text, style, &area, okText);
}
