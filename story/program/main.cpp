// Plays the stories of a file (story/stage.h) and prints the file with what happens: the way to try a session, and to write
// tests/stories/ anew.
#include "story/stage.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>

int main(int count, char** words) {
    std::stringstream file;
    if (count != 2 || !(file << std::ifstream(words[1]).rdbuf())) {
        std::cerr << "Usage: tarnbeacon-story FILE\n";
        return 2;
    }
    try {
        std::cout << story::play(file.str());
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
