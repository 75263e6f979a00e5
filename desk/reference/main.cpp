// describe_options TEMPLATE RESULT: fills in a template and writes the result.
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "desk/reference/template_text.h"

namespace {

std::string ReadFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(std::string(path) + " cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const char* path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw std::runtime_error(std::string(path) + " cannot be written");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: describe_options TEMPLATE RESULT\n";
        return 2;
    }
    try {
        WriteFile(argv[2], ventrix::desk::FillTemplate(ReadFile(argv[1])));
    } catch (const std::exception& error) {
        std::cerr << "error: " << argv[1] << ": " << error.what() << '\n';
        return 1;
    }
}
