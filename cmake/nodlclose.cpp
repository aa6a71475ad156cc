// Linked into sanitizer builds: an OpenGL driver that was unloaded at the end can't be named in a leak report, and its
// known leaks couldn't be told from ours.
extern "C" int dlclose(void*)
{
  return 0;
}
