#include "track/smalltrack.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

// A save is killed at each of many system calls. Whatever the moment, each file holds one of its two whole contents.

namespace fs = std::filesystem;

namespace {

constexpr int MOMENTS = 200;
using Files = std::map<std::string, std::string>;

// The two states between which the saving process goes to and fro. All four files differ.
void Change(RTrackVRML& track, bool second)
{
  track.gridCount = second ? 20 : 1;
  for (auto& position : track.gridPos)
    position.from.x = second ? 7.0f : 1.5f;
  track.splines.lines[3].longGrip = second ? 0.5f : 1.0f;
  track.trafficGrid.wayPoints.At(0)->velocity = second ? 50.0f : 30.0f;
  (*track.nodes.At(0))->flags = second ? 16 : 6;
}

Files SaveOf(const SmallTrack& small, RTrackVRML& track, bool second)
{
  Change(track, second);
  EXPECT_TRUE(track.Save());
  return small.SavedFiles();
}

void RemoveStrays(const SmallTrack& small)
{
  for (const auto& entry : fs::directory_iterator(small.Path()))
    if (entry.path().extension() != ".ini" && entry.path().extension() != ".dof")
      fs::remove(entry.path());
}

// Stops itself when it is loaded; then saves one state and the other until it is killed.
[[noreturn]] void SaveForEver(const SmallTrack& small)
{
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDERR_FILENO);
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
    _exit(1);
  const auto track = small.Load();
  if (!track)
    _exit(2);
  raise(SIGSTOP);
  for (bool second = true;; second = !second) {
    Change(*track, second);
    if (!track->Save())
      _exit(3);
    raise(SIGUSR1); // tells that a save is done; the one who traces keeps it from us
  }
}

// A traced process: each step runs it to the next entry into or return from a system call.
class Victim
{
public:
  explicit Victim(const SmallTrack& small)
  {
    pid = fork();
    if (pid == 0)
      SaveForEver(small);
    stopped = Wait() && WSTOPSIG(status) == SIGSTOP;
    if (stopped)
      ptrace(PTRACE_SETOPTIONS, pid, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  }
  ~Victim() { Kill(); }
  Victim(const Victim&) = delete;
  Victim& operator=(const Victim&) = delete;

  bool IsStopped() const { return stopped; }
  // False when the process is gone.
  bool Step()
  {
    ptrace(PTRACE_SYSCALL, pid, nullptr, nullptr);
    return Wait();
  }
  bool HasSaved() const { return WSTOPSIG(status) == SIGUSR1; }
  void Kill()
  {
    if (pid <= 0)
      return;
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    pid = -1;
  }

private:
  bool Wait() { return waitpid(pid, &status, 0) == pid && WIFSTOPPED(status); }
  pid_t pid = -1;
  int status = 0;
  bool stopped = false;
};

// Steps of two saves, there and back again. 0 when processes can't be traced here.
int StepsOfTwoSaves(const SmallTrack& small)
{
  Victim victim(small);
  int steps = 0;
  int saves = 0;
  while (victim.IsStopped() && saves < 2 && victim.Step()) {
    ++steps;
    saves += victim.HasSaved();
  }
  return saves == 2 ? steps : 0;
}

} // namespace

TEST(SaveKilled, LeavesEachFileWholeAtAnyMoment)
{
  SmallTrack small;
  small.WriteAll();
  const auto track = small.Load();
  ASSERT_TRUE(track);
  const Files second = SaveOf(small, *track, true);
  const Files first = SaveOf(small, *track, false);
  for (const auto& [leaf, text] : first)
    ASSERT_NE(text, second.at(leaf)) << leaf;

  const int steps = StepsOfTwoSaves(small);
  if (steps == 0)
    GTEST_SKIP() << "skipped: processes can't be traced here";
  ASSERT_GT(steps, MOMENTS);
  int mixed = 0;
  int changed = 0;
  for (int moment = 0; moment < MOMENTS; ++moment) {
    const int last = static_cast<int>(int64_t(steps) * moment / MOMENTS);
    SCOPED_TRACE("killed at step " + std::to_string(last) + " of " + std::to_string(steps));
    for (const auto& [leaf, text] : first)
      small.Write(leaf, text);
    Victim victim(small);
    for (int step = 0; step <= last; ++step)
      ASSERT_TRUE(victim.Step());
    victim.Kill();
    int isSecond = 0;
    for (const auto& [leaf, text] : small.SavedFiles()) {
      EXPECT_TRUE(text == first.at(leaf) || text == second.at(leaf)) << leaf << ":\n" << text;
      isSecond += text == second.at(leaf);
    }
    changed += isSecond > 0;
    mixed += isSecond > 0 && isSecond < 4;
    const std::string special = small.Text("special.ini");
    EXPECT_TRUE(special.starts_with("; special data of a small track\ncustom\n{\n  secret=42 ; not ours\n"));
    RemoveStrays(small);
  }
  // The moments met all states: untouched, between two files, and all new.
  EXPECT_GT(changed, MOMENTS / 10);
  EXPECT_LT(changed, MOMENTS);
  EXPECT_GT(mixed, 0);
  std::printf("%d kills over %d steps of two saves: %d left new files, %d of those between two files\n", MOMENTS, steps,
              changed, mixed);
  EXPECT_TRUE(small.Load()); // and what the last left behind is a track
}
