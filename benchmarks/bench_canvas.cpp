// A frame's interface without the graphics driver: what gathering the rectangles and letters of a busy mode costs.
// They are gathered inside one run; sending them out lies behind the measured time.

#include "platform/qsdldisplay.h"
#include "ui/qapp.h"
#include "ui/qbutton.h"
#include "ui/qedit.h"
#include "ui/qglbatch.h"
#include "ui/qlabel.h"
#include "ui/qlistbox.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

void PaintAll(benchmark::State& state)
{
  setenv("SDL_VIDEODRIVER", "offscreen", 1);
  QApp application("bench", "Bench", std::make_unique<QSDLDisplay>());
  application.createFlags |= QApp::NO_BC;
  if (!application.Create()) {
    state.SkipWithError("no OpenGL without a screen here");
    return;
  }
  std::vector<std::unique_ptr<QWindow>> controls;
  QShell* shell = application.GetShell();
  for (int i = 0; i < 60; ++i)
    controls.push_back(std::make_unique<QButton>(shell, QRect{10 + i % 10 * 120, 10 + i / 10 * 40, 110, 30},
                                                 "Declare line " + std::to_string(i) + " (Ctrl-G)"));
  for (int i = 0; i < 20; ++i)
    controls.push_back(std::make_unique<QLabel>(shell, QRect{10, 260 + i * 20, 200, 18}, "A label with some words"));
  for (int i = 0; i < 10; ++i)
    controls.push_back(
        std::make_unique<QEdit>(shell, QRect{250, 260 + i * 30, 200, 24}, size_t{80}, 0u, "12.345 and so on"));
  auto list = std::make_unique<QListBox>(shell, QRect{500, 260, 300, 30 * 18});
  for (int i = 0; i < 300; ++i)
    list->AddString("A model of the track number " + std::to_string(i) + ".dof");
  controls.push_back(std::move(list));
  application.RunPoll();
  QGLBatch& batch = application.GetBatch();
  int calls = 0;
  for (auto _ : state) {
    batch.Begin();
    const auto start = std::chrono::steady_clock::now();
    application.GetWindowManager()->PaintAll();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    const int before = batch.Calls();
    batch.End();
    calls = batch.Calls() - before;
  }
  state.counters["draw calls"] = calls;
  controls.clear();
}
BENCHMARK(PaintAll)
    ->Name("60 buttons, 20 labels, 10 fields, a list of 30 lines")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
