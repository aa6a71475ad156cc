#pragma once

#include "geometry/dprogramcompiler.h"

#include <string>
#include <string_view>
#include <vector>

// A Cg program rewritten to HLSL. The two languages differ in how a program meets the pipeline: here parameters of
// "main" become globals or inputs and outputs named by their semantics, around a "main" of our own.
struct QCgSource
{
  // An input or output of the pipeline: the name in the rewritten text, and what OpenGL calls it.
  struct Binding
  {
    std::string name;
    std::string glsl;
  };
  // A parameter of OpenGL's own state, by the name that it got here.
  struct State
  {
    std::string name;
    std::string glsl;
  };

  std::string text;  // HLSL; empty when the source couldn't be read
  std::string error; // "file:line: ..." then
  std::vector<DProgramParameter> parameters;
  std::vector<Binding> bindings;
  std::vector<State> states;
  std::vector<DProgramAttribute> attributes;
  std::vector<std::pair<std::string, int>> annotations;
};

// source: preprocessed, with #line directives for what was included. A "main" that isn't there is an error.
[[nodiscard]] QCgSource QRewriteCg(std::string_view source, DProgramStage stage, const std::string& file);
