#pragma once

#include "ui/qdialog.h"
#include "ui/qedit.h"
#include "ui/qfilelist.h"
#include "ui/qlabel.h"

#include <memory>
#include <string>
#include <vector>

class QFileListBox;

// Chooses a file, or the name of one to be written, by its place in the directories.
// A click on a directory enters it; so does Enter on one that was found by keyboard. What is typed in the field "File"
// is a name, a path, a directory to go to, or a pattern that becomes the filter.
class QFileDialog : public QDialog
{
public:
  enum FileFlag : uint32_t
  {
    SAVE = 1,     // the file need not exist; the user is asked about one that does
    MULTIPLE = 2, // several files of one directory
  };
  struct Filter
  {
    std::string name, pattern; // "ASE files (*.ase)", "*.ase"
  };
  // A directory that doesn't exist gives way to the nearest one above it that does; an empty one is the working
  // directory.
  QFileDialog(QWindow* owner, const QRect& area, std::string_view title, const std::string& startDirectory,
              std::string_view pattern = "*.*", uint32_t fileFlags = 0);
  ~QFileDialog() override;
  const char* GetClassName() const override { return "QFileDialog"; }
  bool Event(QEvent* event) override;
  // 1: OK, 2: Cancel or closed.
  int Execute() override;
  // Those that Up and Down in the field "Filter" go through.
  void SetFilters(std::vector<Filter> choices) { filters = std::move(choices); }
  // Fills in a name and selects it in the list.
  void SetFile(const std::string& name);

  const std::string& GetDirectory() const { return directory; }      // absolute
  const std::string& GetFile() const { return file; }                // the name in it; of several the first
  const std::vector<std::string>& GetFiles() const { return files; } // all chosen names
  const std::string& GetFilter() const { return filter; }            // the pattern in use
  QFileListBox& GetList() { return *list; }
  QEdit& GetFileEdit() { return fileEdit; }
  QEdit& GetDirectoryEdit() { return directoryEdit; }
  QEdit& GetFilterEdit() { return filterEdit; }

private:
  void HandleEvent(QEvent* event);
  void HandleClick(const QWindow* from);
  void EntrySelected();
  void ActivateEntry(); // double click or Enter
  void EnterDirectory(const std::string& path, std::string_view select = {});
  void EnterEntry(const QFileEntry& entry);
  void EnterTypedDirectory();
  void ReadDirectory(std::string_view select);
  void UseFilter(const std::string& pattern);
  void NextFilter(int step);
  std::string Resolve(const std::string& text) const;
  void Accept();
  void AcceptPath(const std::string& path);
  void Take(const std::string& dir, std::vector<std::string> names);
  int Ask(const char* title, const std::string& text, int style, const char* okText = nullptr);
  const QFileEntry* SelectedEntry() const; // null when none is

  uint32_t fileFlags;
  std::string directory, file, filter;
  std::vector<std::string> files;
  std::vector<Filter> filters;
  QFileList entries;
  QLabel directoryLabel;
  QEdit directoryEdit;
  QLabel nameLabel, sizeLabel, dateLabel;
  std::unique_ptr<QFileListBox> list;
  QLabel fileLabel;
  QEdit fileEdit;
  QLabel filterLabel;
  QEdit filterEdit;
  QLabel status;
  QButton open, parentButton, cancel;
  int result = -1;
};
