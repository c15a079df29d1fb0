// Plays sessions of the whole program on the simulated desktop, from a script.
#pragma once

#include <string>

namespace story {

// Plays the stories of a file, each in a world of its own, and returns the file as it is when each line of a script is
// followed by what the operator and the unit see of it (story/story.h). Throws std::invalid_argument for a line that is no
// command.
//   == name    begins a story
//   * press cmdUpgrade   something that the operator does
//   . silence            something that happens to the world around the program; what comes of it is not told
//   := name    at the head of the file: the lines below have a name
//   :: name    those lines
// Commands ahead of the first name are performed before each story. The table of commands is in story/stage.cpp.
std::string play(const std::string& file);

} // namespace story
