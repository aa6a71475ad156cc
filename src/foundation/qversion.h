#pragma once

// What the title bar shows and "--version" prints.
inline constexpr char PAVEX_VERSION[] = "Torvik Pavex v7.8.1 - 64 bits";
