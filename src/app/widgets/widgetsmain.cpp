// Shows developers of modes every control and dialog, to be tried out: pavex-widgets [--scale N] [--page NAME].

#include "app/widgets/widgets.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "platform/qsdldisplay.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

struct Arguments
{
  float scale = 0; // 0: as the platform says
  std::string page;
  bool good = true;
};

Arguments Parse(int argc, char** argv)
{
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    const char* value = i + 1 < argc ? argv[++i] : nullptr;
    if (name == "--scale" && value)
      arguments.scale = std::strtof(value, nullptr);
    else if (name == "--page" && value)
      arguments.page = value;
    else
      arguments.good = false;
  }
  return arguments;
}

} // namespace

int main(int argc, char** argv)
{
  const Arguments arguments = Parse(argc, argv);
  if (!arguments.good) {
    std::fprintf(stderr, "usage: pavex-widgets [--scale N] [--page NAME]\n");
    return 2;
  }
  qstring programDirectory;
  QCurrentDir(programDirectory);
  QReports().logDirectory = programDirectory.Str();
  QReports().applicationName = "pavex-widgets";
  QSetCurrentDirectory("..");

  QApp application("widgets", "Pavex widgets", std::make_unique<QSDLDisplay>());
  application.SetInfo(std::make_unique<QInfo>("torvik.ini", QInfo::NO_OPEN_WARNING));
  application.rShell = {-1, -1, Widgets::WID, Widgets::HGT};
  application.createFlags |= QApp::NO_BC | QApp::FRAME;
  if (!application.Create())
    return 1;
  auto widgets = std::make_unique<Widgets>();
  if (!arguments.page.empty() && !widgets->ShowPage(arguments.page)) {
    std::fprintf(stderr, "pavex-widgets: there is no page '%s'\n", arguments.page.c_str());
    return 2;
  }
  application.SetEventProc([&widgets](QEvent* event) {
    widgets->Event(*event);
    return false;
  });
  application.SetIdleProc([&widgets] {
    widgets->Idle();
    app->PaintIfWanted();
    app->GetDisplay().Sleep(10);
  });
  application.SetExitProc([&widgets](int) { widgets.reset(); });
  application.Run();
  return 0;
}
