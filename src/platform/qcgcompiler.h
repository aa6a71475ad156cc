#pragma once

#include "geometry/dprogramcompiler.h"

#include <string>

// Compiles Cg programs to GLSL 1.20 that works beside the fixed pipeline: the source is rewritten to HLSL, glslang
// reads that, SPIRV-Cross writes the GLSL, and the inputs and outputs become OpenGL's own (gl_Vertex, gl_TexCoord[0]),
// so that a program of one stage goes with the fixed functions of the other. Geometry programs aren't compiled.
// What was compiled is kept in the directory; empty: nowhere.
DProgramCompiler QCgCompiler(const std::string& cacheDirectory);
