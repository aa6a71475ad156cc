// Shows developers of modes every control and dialog, to be tried out: pavex-widgets [--page NAME].

#include "app/widgets/widgets.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qreport.h"
#include "platform/qsdldisplay.h"

#include <cstdio>
#include <memory>
#include <string_view>

int main(int argc, char** argv)
{
  const bool hasPage = argc == 3 && std::string_view(argv[1]) == "--page";
  if (argc != 1 && !hasPage) {
    std::fprintf(stderr, "usage: pavex-widgets [--page NAME]\n");
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
  if (hasPage && !widgets->ShowPage(argv[2])) {
    std::fprintf(stderr, "pavex-widgets: there is no page '%s'\n", argv[2]);
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
