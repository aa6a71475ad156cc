#pragma once

#include "geometry/dprogramcompiler.h"

#include <string>
#include <string_view>

// How a Cg semantic is spelt here: "TEXCOORD0" for "tex0" and "TEXCOORD", "POSITION" for "HPOS". Empty stays empty.
std::string QCgSemantic(std::string_view text);
// The semantic that lies steps behind in a row ("TEXCOORD5" is 2 behind "TEXCOORD3").
std::string QCgSemanticBehind(const std::string& semantic, int steps);
// What OpenGL calls an input of a stage, as an expression of four components. A name of the form "cgv_..." is a varying
// and one of the form "cga_..." an attribute that has to be declared.
std::string QCgInput(DProgramStage stage, const std::string& semantic);
// What OpenGL calls an output of the vertex stage.
std::string QCgVertexOutput(const std::string& semantic);
// Outputs of one number: fog, depth, size of a point.
bool QCgIsScalar(const std::string& semantic);
// Where the attribute of a "cga_..." name is bound, as OpenGL numbers them beside the fixed pipeline's; -1: nowhere.
int QCgAttributeLocation(const std::string& semantic);
// The state of the fixed pipeline behind "state.matrix.mvp", "glstate.material.diffuse" and their like, in the form
// that a parameter of the same name would be set in; empty: not known. A matrix stands there row by row.
std::string QCgState(std::string_view path);
