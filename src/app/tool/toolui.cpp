#include "app/tool/toolui.h"

#include "app/tool/tool.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

class Bar : public QToolProgress
{
public:
  explicit Bar(const char* title) : what(title) {}
  ~Bar() override { ToolProgress(what.c_str(), 1); }
  void SetText(std::string_view) override {}
  void SetProgress(int newDone, int newTotal) override
  {
    done = newDone;
    total = newTotal;
  }
  bool Poll() override
  {
    Flush();
    return true;
  }
  void Flush() override
  {
    if (done < total)
      ToolProgress(what.c_str(), static_cast<float>(done) / static_cast<float>(total));
  }

private:
  std::string what;
  int done = 0;
  int total = 0;
};

// The work on one file in a process of its own.
class Job
{
public:
  Job(const std::string& file, const std::function<bool(const std::string& file)>& work) : said(std::tmpfile())
  {
    std::fflush(stdout);
    std::fflush(stderr);
    process = said ? fork() : -1;
    if (process != 0) {
      if (process < 0)
        good = work(file); // here, then
      return;
    }
    dup2(fileno(said), STDERR_FILENO);
    const bool done = work(file);
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(done ? 0 : 1);
  }
  ~Job()
  {
    if (said)
      std::fclose(said);
  }
  Job(const Job&) = delete;
  Job& operator=(const Job&) = delete;
  // Waits for its end and tells what it said. False when the work failed, or when its process broke down.
  bool Finish(const std::string& file)
  {
    if (process <= 0)
      return good;
    int status = 0;
    const bool ended = waitpid(process, &status, 0) == process && WIFEXITED(status);
    std::rewind(said);
    std::array<char, 4096> part;
    for (size_t n; (n = std::fread(part.data(), 1, part.size(), said)) > 0;)
      std::fwrite(part.data(), 1, n, stderr);
    if (!ended)
      std::fprintf(stderr, "%s: the work on it broke down\n", file.c_str());
    return ended && WEXITSTATUS(status) == 0;
  }

private:
  std::FILE* said;
  pid_t process = -1;
  bool good = false;
};

} // namespace

std::unique_ptr<QToolProgress> ToolUi::OpenProgress(const char* title, const char*)
{
  return std::make_unique<Bar>(title);
}

bool ToolUi::Confirm(const char*, const char*)
{
  return true;
}

void ToolUi::Tell(const char* title, std::string_view text)
{
  std::fprintf(stderr, "%s: %.*s\n", title, static_cast<int>(text.size()), text.data());
}

bool ToolUi::AskText(const char*, const char*, std::string&)
{
  return true;
}

void ToolUi::ShowFile(const std::string&)
{}

int ToolUi::WorkOnFiles(std::span<const std::string> files, QToolProgress& progress,
                        const std::function<bool(const std::string& file)>& work)
{
  const size_t cores = std::max(std::thread::hardware_concurrency(), 1u);
  std::deque<Job> jobs;
  size_t started = 0;
  int failed = 0;
  for (size_t done = 0; done < files.size(); ++done) {
    for (; started < files.size() && jobs.size() < cores; ++started)
      jobs.emplace_back(files[started], work);
    failed += jobs.front().Finish(files[done]) ? 0 : 1;
    jobs.pop_front();
    progress.SetProgress(static_cast<int>(done) + 1, static_cast<int>(files.size()));
    progress.Flush();
  }
  return failed;
}
