// Plays the stories of a file (story/player.h) and prints the file with what happens. Use it to try a session, and to update
// a file of tests/stories/.
#include "story/player.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>

int main(int argc, char** argv) {
    std::stringstream file;
    if (argc != 2 || !(file << std::ifstream(argv[1]).rdbuf())) {
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
