#include "platform/stackwalker.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <elfutils/libdwfl.h>
#include <fcntl.h>
#include <memory>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

template <typename... Args>
std::string Printed(const char* format, Args... args)
{
  std::array<char, 2048> text;
  std::snprintf(text.data(), text.size(), format, args...);
  return text.data();
}

std::string Demangled(const char* name)
{
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> plain(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                          &std::free);
  std::string function = status == 0 ? plain.get() : name;
  // The report's line has the brackets of its own.
  if (const size_t bracket = function.find('('); bracket != std::string::npos && bracket > 0)
    function.resize(bracket);
  return function;
}

// A module's name in a map is its file.
int OpenModule(Dwfl_Module*, void**, const char* name, Dwarf_Addr, char** path, Elf**)
{
  const int handle = name[0] == '/' ? open(name, O_RDONLY | O_CLOEXEC) : -1;
  if (handle >= 0)
    *path = strdup(name); // the library frees it
  return handle;
}

// Debug information in files of its own may lie at the network's other end: a start isn't to wait for that.
int NoOtherFile(Dwfl_Module*, void**, const char*, Dwarf_Addr, const char*, const char*, GElf_Word, char**)
{
  return -1;
}

using Session = std::unique_ptr<Dwfl, decltype(&dwfl_end)>;

// Knows the modules of the map, with what debug information their own files have.
Session Open(std::FILE* maps)
{
  static const Dwfl_Callbacks callbacks = {OpenModule, NoOtherFile, dwfl_offline_section_address, nullptr};
  Session session(dwfl_begin(&callbacks), &dwfl_end);
  if (session &&
      (dwfl_linux_proc_maps_report(session.get(), maps) != 0 || dwfl_report_end(session.get(), nullptr, nullptr) != 0))
    session.reset();
  return session;
}

} // namespace

bool StackWalker::ShowCallstack(std::span<const uintptr_t> addresses, std::FILE* maps)
{
  const char* user = std::getenv("USER");
  OnSymInit("", 0, user ? user : "");
  const Session session = Open(maps);
  if (!session)
    OnDbgHelpErr("dwfl_linux_proc_maps_report", dwfl_errno(), 0);
  for (size_t i = 0; i < addresses.size(); ++i) {
    CallstackEntry entry;
    entry.address = addresses[i];
    entry.function = entry.file = "?";
    // An address behind a call may already belong to the next line.
    const Dwarf_Addr at = i == 0 ? addresses[i] : addresses[i] - 1;
    Dwfl_Module* module = session ? dwfl_addrmodule(session.get(), at) : nullptr;
    if (module) {
      Dwarf_Addr begin = 0, end = 0;
      const char* path = dwfl_module_info(module, nullptr, &begin, &end, nullptr, nullptr, nullptr, nullptr);
      if (path) {
        entry.file = path;
        OnLoadModule(path, path, begin, static_cast<unsigned>(end - begin));
      }
      if (const char* name = dwfl_module_addrname(module, at))
        entry.function = Demangled(name);
      if (Dwfl_Line* line = dwfl_module_getsrc(module, at))
        if (const char* source = dwfl_lineinfo(line, nullptr, &entry.line, nullptr, nullptr, nullptr))
          entry.file = source;
    }
    OnCallstackEntry(entry);
  }
  return session != nullptr;
}

void StackWalker::OnSymInit(const char* searchPath, unsigned options, const char* userName)
{
  OnOutput(Printed("SymInit: Symbol-SearchPath: '%s', symOptions: %u, UserName: '%s'\n", searchPath, options, userName)
               .c_str());
  utsname machine{};
  uname(&machine);
  int major = 0, minor = 0, patch = 0;
  std::sscanf(machine.release, "%d.%d.%d", &major, &minor, &patch);
  OnOutput(Printed("OS-Version: %d.%d.%d (%s) 0x%x-0x%x\n\n", major, minor, patch, machine.sysname, 0u, 0u).c_str());
}

void StackWalker::OnLoadModule(const char*, const char*, uint64_t, unsigned)
{}

void StackWalker::OnCallstackEntry(const CallstackEntry& entry)
{
  OnOutput(Printed("0x%012lX %s (line %d): %s()\n", static_cast<unsigned long>(entry.address), entry.file.c_str(),
                   entry.line, entry.function.c_str())
               .c_str());
}

void StackWalker::OnDbgHelpErr(const char* function, int error, uintptr_t address)
{
  OnOutput(Printed("*** DbgHelp error: %s, GetLastError: %d (Address: %p)\n", function, error,
                   reinterpret_cast<const void*>(address))
               .c_str());
}

void StackWalker::OnOutput(const char* text)
{
  std::fputs(text, stderr);
}
