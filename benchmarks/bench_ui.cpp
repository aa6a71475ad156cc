// The interface without its drawing: events on their way, and a long list.

#include "ui/qapp.h"
#include "ui/qbutton.h"
#include "ui/qedit.h"
#include "ui/qlistbox.h"
#include "ui/qnulldisplay.h"

#include <benchmark/benchmark.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

// As many controls as a busy mode has.
class Panel
{
public:
  Panel()
  {
    auto owned = std::make_unique<QNullDisplay>();
    display = owned.get();
    display->idleLimit = std::numeric_limits<int>::max();
    application = std::make_unique<QApp>("bench", "Bench", std::move(owned));
    application->createFlags |= QApp::NO_BC;
    if (!application->Create())
      return;
    for (int i = 0; i < 70; ++i) {
      auto button = std::make_unique<QButton>(
          application->GetShell(), QRect{10 + i % 10 * 120, 10 + i / 10 * 40, 110, 30}, "Button " + std::to_string(i));
      button->SetShortcut(QMOD_CTRL | ('A' + i % 26));
      controls.push_back(std::move(button));
    }
    for (int i = 0; i < 10; ++i)
      controls.push_back(
          std::make_unique<QEdit>(application->GetShell(), QRect{10 + i * 120, 400, 110, 24}, size_t{80}));
    application->RunPoll();
  }
  ~Panel() { controls.clear(); }

  QNullDisplay* display;
  std::unique_ptr<QApp> application;
  std::vector<std::unique_ptr<QWindow>> controls;
};

void Events(benchmark::State& state)
{
  Panel panel;
  constexpr int COUNT = 100'000;
  for (auto _ : state) {
    state.PauseTiming();
    for (int i = 0; i < COUNT / 4; ++i) {
      panel.display->Move(i * 7 % 1280, i * 3 % 800);
      panel.display->Wheel(120);
      panel.display->KeyDown('A' + i % 26);
      panel.display->KeyUp('A' + i % 26);
    }
    state.ResumeTiming();
    panel.application->RunPoll();
  }
  state.SetItemsProcessed(state.iterations() * COUNT);
}
BENCHMARK(Events)->Name("100,000 events")->Unit(benchmark::kMillisecond);

constexpr int ENTRIES = 10'000;

void Fill(QListBox& list)
{
  for (int i = 0; i < ENTRIES; ++i)
    list.AddString("Entry " + std::to_string(i));
  list.AddString("Zebra");
}

void ListOpen(benchmark::State& state)
{
  Panel panel;
  for (auto _ : state) {
    QListBox list(panel.application->GetShell(), {700, 50, 300, 400});
    Fill(list);
    list.Paint();
  }
}
BENCHMARK(ListOpen)->Name("list of 10,000: open")->Unit(benchmark::kMillisecond);

void ListStep(benchmark::State& state)
{
  Panel panel;
  QListBox list(panel.application->GetShell(), {700, 50, 300, 400});
  Fill(list);
  panel.application->GetWindowManager()->SetKeyboardFocus(&list);
  const auto kind = state.range(0);
  for (auto _ : state) {
    panel.display->now += 5000;
    if (kind == 0)
      panel.display->Wheel(-120);
    else if (kind == 1)
      panel.display->Key(QKEY_PGDN);
    else
      panel.display->Type(list.GetFirstSelected() == ENTRIES ? "e" : "z");
    panel.application->RunPoll();
    list.Paint();
  }
}
BENCHMARK(ListStep)
    ->Name("list of 10,000: step")
    ->ArgName("wheel_page_letter")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

// A megabyte in lines: typing, and moving by a page.
void EditStep(benchmark::State& state)
{
  Panel panel;
  std::string text;
  while (text.size() < 1 << 20)
    text += "a line of some length, as notes have them\n";
  QEdit edit(panel.application->GetShell(), {700, 50, 300, 400}, 2 << 20, QEdit::MULTILINE | QEdit::SCROLLBAR, text);
  panel.application->GetWindowManager()->SetKeyboardFocus(&edit);
  edit.Goto(text.size() / 2);
  for (auto _ : state) {
    if (state.range(0) == 0)
      panel.display->Type("x");
    else
      panel.display->Key(QKEY_PGDN);
    panel.application->RunPoll();
    edit.Paint();
  }
}
BENCHMARK(EditStep)->Name("text of 1 MB: step")->ArgName("type_page")->DenseRange(0, 1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
