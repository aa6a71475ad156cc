// Shows developers of modes every control and dialog, to be tried out: pavex-widgets [--page NAME] [--scale N].

#include "app/widgets/widgets.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "platform/qsdldisplay.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

struct Options
{
  const char* page = nullptr;
  float scale = 0; // as the screen suggests
};

bool ParseOptions(int argc, char** argv, Options& options)
{
  for (int i = 1; i + 1 < argc; i += 2)
    if (std::string_view(argv[i]) == "--page")
      options.page = argv[i + 1];
    else if (std::string_view(argv[i]) == "--scale")
      options.scale = static_cast<float>(std::atof(argv[i + 1]));
    else
      return false;
  return argc % 2 == 1;
}

} // namespace

int main(int argc, char** argv)
{
  Options options;
  if (!ParseOptions(argc, argv, options)) {
    std::fprintf(stderr, "usage: pavex-widgets [--page NAME] [--scale N]\n");
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
  application.scale = options.scale;
  if (!application.Create())
    return 1;
  auto widgets = std::make_unique<Widgets>();
  if (options.page && !widgets->ShowPage(options.page)) {
    std::fprintf(stderr, "pavex-widgets: there is no page '%s'\n", options.page);
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
