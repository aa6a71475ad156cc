#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

// Gives addresses on a stack the names of their functions and their source lines.
class StackWalker
{
public:
  virtual ~StackWalker() = default;
  // maps: a process's memory map as /proc/PID/maps has it, read from where it stands. The innermost address is the one
  // of the fault, the others are those behind calls. False when nothing can be found out; the addresses are told all
  // the same.
  bool ShowCallstack(std::span<const uintptr_t> addresses, std::FILE* maps);

protected:
  struct CallstackEntry
  {
    uintptr_t address = 0;
    std::string function; // "?" when it isn't known
    std::string file;     // the module's, when the source isn't known
    int line = 0;
  };
  virtual void OnSymInit(const char* searchPath, unsigned options, const char* userName);
  virtual void OnLoadModule(const char* path, const char* module, uint64_t base, unsigned size);
  virtual void OnCallstackEntry(const CallstackEntry& entry);
  virtual void OnDbgHelpErr(const char* function, int error, uintptr_t address);
  virtual void OnOutput(const char* text); // the console
};

// Keeps what is told.
class StackWalkerToString : public StackWalker
{
public:
  const std::string& GetText() const { return text; }

protected:
  void OnSymInit(const char*, unsigned, const char*) override {}
  void OnLoadModule(const char*, const char*, uint64_t, unsigned) override {}
  void OnOutput(const char* more) override { text += more; }

private:
  std::string text;
};
