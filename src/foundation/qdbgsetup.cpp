#include "foundation/qdbgsetup.h"

#include "foundation/qarg.h"
#include "foundation/qinfo.h"
#include "foundation/qlog.h"
#include "foundation/qreport.h"

#include <charconv>

namespace {

bool& IsStrict()
{
  static bool strict = false;
  return strict;
}

std::string TextOf(const QInfo& info, const char* path)
{
  std::string text;
  info.GetString(path, text, "");
  return text;
}

void OpenUdp(const std::string& address)
{
  const size_t colon = address.rfind(':');
  const std::string digits = colon == std::string::npos ? std::string() : address.substr(colon + 1);
  int port = 0;
  const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  if (colon == 0 || digits.empty() || parsed.ptr != digits.data() + digits.size() || port <= 0 || port > 65535) {
    QWARN("qdbg_setup: need host:port in dev_udpout (now '%s')", address.c_str());
    return;
  }
  const std::string host = address.substr(0, colon);
  if (!QLogOpenUdp(host, port))
    QWARN("qdbg_setup: can't open %s:%d", host.c_str(), port);
}

} // namespace

void qdbg_setup(QInfo& info, const QDbgServices& services)
{
  if (const std::string command = TextOf(info, "dev.run_first"); !command.empty() && services.runCommand)
    services.runCommand(command);
  if (const int offset = info.GetInt("dev.port_offset"); offset > 0 && services.addPortOffset)
    services.addPortOffset(offset);
  if (const int drops = info.GetInt("dev.fake_packet_drops"); drops > 0 && services.fakePacketDrops)
    services.fakePacketDrops(drops);
  if (const std::string address = TextOf(info, "dev.udp_out"); !address.empty())
    OpenUdp(address);
  IsStrict() = info.GetInt("dev.strict") != 0;
  if ((IsStrict() || info.GetInt("dev.log_last") != 0) && !QLogOpenLast())
    QWARN("qdbg_setup: can't write %s", QLogLastPath().c_str());
  QReports().debugLevel = info.GetInt("dev.debug_level");
  if (info.GetInt("dev.opengl_checks") != 0) {
    QDebugOptions() |= QDEBUG_OPENGL;
    QWARN("dev.opengl_checks is 1; may slow the program down - only use when tracking down a bug");
  }
  if (info.GetInt("dev.argument_tracing") != 0) {
    QDebugOptions() |= QDEBUG_ARGUMENTS;
    QWARN("dev.argument_tracing is 1; may slow the program down - only use when tracking down a bug");
  }
}

bool QProblemsEndRun(std::string& title, std::string& text)
{
  if (!QLogHasProblems())
    return false;
  title = IsStrict() ? "Strict mode" : "Errors";
  text = "Errors and/or warnings occurred, program will exit and display problems.\n";
  text +=
      IsStrict() ? "This is due to strict mode; see dev.strict in torvik.ini." : "See also dev.log_last in torvik.ini.";
  return true;
}
