// The fuzzer's entry point: exercises any bytes as a document. Built with clang's -fsanitize=fuzzer
// (CMakeLists.txt).
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "markers/document_exercise.h"
#include "platform/temp_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    static const std::string path = ventrix::platform::MakeTempFile(ventrix::platform::TempFolder(), "vx");
    const std::string problem =
        ventrix::test::ExerciseDocument(path, {reinterpret_cast<const char*>(bytes), count});
    if (!problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        std::abort();
    }
    return 0;
}
