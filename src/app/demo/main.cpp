#include "app/demo/demo.h"

int main(int argc, char** argv)
{
  return DemoMain({argv + 1, argv + argc});
}
