// Any bytes as an XML document: load, save, change, save and load again.
#include "fuzz/checks.h"
#include "fuzz/environment.h"
#include "fuzz/targets.h"
#include "markers/document_exercise.h"

namespace ventrix::fuzz {

void XmlDocument(std::string_view input) {
    static const std::string path = TempFileWith("document", "");
    const std::string problem = test::ExerciseDocument(path, input);
    Check(problem.empty(), problem);
}

}  // namespace ventrix::fuzz
