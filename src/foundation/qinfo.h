#pragma once

#include "foundation/qinfonode.h"
#include "foundation/qobject.h"
#include "foundation/qrect.h"
#include "foundation/qstring.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class QInfoTree;

// A text file of keys and brace-nested trees, kept in file order with its comments.
// Paths are dotted and exact: "view.width". A Get that finds nothing gives the default it was handed.
// Numbers are read and written in the C locale whatever the process has set.
class QInfo : public QObject
{
public:
  static constexpr int MAX_LEVEL = 10;
  enum Flag : uint32_t
  {
    MODIFIED = 0x01,
    FILE_READ = 0x02,
    NO_OPEN_WARNING = 0x04,
    WARN_FALLBACK = 0x08,
    STOP_AT_BRACE = 0x10,
    REQUIRED = 0x20,
    NO_READ = 0x40,
  };
  explicit QInfo(std::string_view fileName, uint32_t flags = 0); // reads the file, unless NO_READ
  ~QInfo() override;                                             // writes it, if the tree was changed
  QInfo(const QInfo&) = delete;
  QInfo& operator=(const QInfo&) = delete;
  const char* GetClassName() const override { return "QInfo"; }

  // Always true. What stood in the tree before goes. A file that doesn't exist gives an empty tree (reported, unless
  // NO_OPEN_WARNING); so does one that exists and can't be read, and Write then refuses to put it in the file's place.
  bool Read();
  // The fallback's file too. A changed tree is written first.
  bool Reload();
  // False when the file can't be written (reported; the tree stays changed) or the user keeps the other one.
  bool Write(const char* path = nullptr, bool checkChanged = true);
  // What Write would put into the file.
  std::string WriteToText() const;
  // Takes the place of Read for a tree that doesn't come from a file; fileName stands in messages only.
  void ReadFromText(std::string_view text);
  // Asks when the file isn't the one that was read or written last. True: the user keeps it.
  bool KeepsOtherFile(const std::string& path) const;
  // For a caller that wrote the text of WriteToText itself: the tree is taken as unmodified, the file's time noted.
  void MarkWritten();
  bool IsRead() const { return flags & FILE_READ; }
  bool IsModified() const { return flags & MODIFIED; }
  bool IsUnreadable() const { return unreadable; }
  const std::string& FileName() const { return fileName; }
  void SetFallback(std::unique_ptr<QInfo> info);

  bool GetString(std::string_view path, qstring& out, const char* otherwise = nullptr) const;
  bool GetString(std::string_view path, std::string& out, const char* otherwise = nullptr) const;
  // The next call overwrites what the pointer shows.
  const char* GetStringDirect(std::string_view path, const char* otherwise = nullptr) const;
  int GetInt(std::string_view path, int otherwise = 0) const; // an expression: "4*4" gives 16
  bool GetBool(std::string_view path, bool otherwise) const;
  float GetFloat(std::string_view path, float otherwise = 0) const;
  // count numbers into out. False if the key wasn't found, and then all are the default.
  bool GetInts(std::string_view path, int count, int* out, int otherwise = 0) const;
  // Always true. A missing number gets otherwise[i], or 0 when otherwise is null.
  bool GetFloats(std::string_view path, int count, float* out, const float* otherwise = nullptr) const;
  bool GetInts(std::string_view path, QRect& out) const; // x, y, width, height; all 0 if the key wasn't found
  // A network address. One that is to be made from the machine's own ("+1", "/24+1") gives "127.0.0.1".
  bool GetHost(std::string_view path, qstring& out, const char* otherwise = nullptr) const;
  bool PathExists(std::string_view path) const;   // here or in the fallback
  int CountChildren(std::string_view path) const; // comments don't count

  // False, with nothing changed, when the path is empty, ends at a tree or runs on behind a key.
  bool SetString(std::string_view path, std::string_view value);
  bool SetInt(std::string_view path, int value);                         // "%d"
  bool SetFloat(std::string_view path, float value);                     // "%f"
  bool SetFloats(std::string_view path, const float* values, int count); // "%f %f ..."
  // A key or tree that reads as absent from then on, and isn't written. False when there is none at the path.
  bool RemoveKey(std::string_view path);

  // Into the log; unusedOnly lists the keys that no Get has read, to find misspelt ones.
  void DbgPrint(const char* text, bool unusedOnly = false) const;
  const QInfoNode* Root() const;
  // The node at a path, trees included; the root for an empty one, null when there is none.
  const QInfoNode* FindNode(std::string_view path) const;

private:
  bool Lookup(std::string_view path, std::string_view& value) const;
  void SetModified(bool on) { flags = on ? flags | MODIFIED : flags & ~uint32_t{MODIFIED}; }
  void ReportUnreadFile(int error) const;

  std::string fileName;
  uint32_t flags;
  bool unreadable = false;
  int64_t fileTime = 0;            // nanoseconds; 0 when there was no file
  std::unique_ptr<QInfoTree> tree; // never null
  std::unique_ptr<QInfo> fallback;
};
