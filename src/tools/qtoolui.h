#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

// What a tool needs of whoever started it: the editor fills it with dialogs, the command line with lines on stderr.

// Follows a long operation until it is destroyed.
class QToolProgress
{
public:
  virtual ~QToolProgress();
  virtual void SetText(std::string_view text) = 0;
  virtual void SetProgress(int done, int total) = 0;
  // Shows what was set and lets the user act. False once cancelled.
  virtual bool Poll() = 0;
  // Shows what was set; a Cancel meanwhile isn't asked for.
  virtual void Flush() = 0;
};

class QToolUi
{
public:
  virtual ~QToolUi();
  // Never null.
  virtual std::unique_ptr<QToolProgress> OpenProgress(const char* title, const char* text) = 0;
  virtual bool Confirm(const char* title, const char* text) = 0; // true for OK
  virtual void Tell(const char* title, std::string_view text) = 0;
  // False on Cancel: text stays.
  virtual bool AskText(const char* title, const char* prompt, std::string& text) = 0;
  // Opens a text file for the user to read.
  virtual void ShowFile(const std::string& path) = 0;
  // Does the work for each file, in this order, and shows how far it is; a Cancel ends it behind a file. Gives the
  // number of files whose work failed. The work on one file neither needs nor leaves anything in the process: it may be
  // done for several at once, elsewhere.
  virtual int WorkOnFiles(std::span<const std::string> files, QToolProgress& progress,
                          const std::function<bool(const std::string& file)>& work);
};
