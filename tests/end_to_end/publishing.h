// Publishes a document with the module as it is shipped, the desk host and its real clients, and reads the
// pages.
#pragma once

#include <gtest/gtest.h>

#include <map>

#include "desk/clients/dispatcher_client.h"
#include "desk/clients/dita_ot_client.h"
#include "desk/clients/xslt_client.h"
#include "desk/host/desk_host.h"
#include "support/page_query.h"
#include "support/test_drives.h"

namespace ventrix::test {

inline constexpr const char* kMarkerWords[] = {"QL_START", "QL_END",  "QL_EQ",     "QL_TARGET", "QL_SEP",
                                               "QL_SA_S",  "QL_SA_E", "QL_ELEM_S", "QL_ELEM_E"};

class Publishing : public testing::Test {
  protected:
    /// Publishes a document on drive C:. Returns the pages by their path relative to the result folder.
    std::map<std::string, std::string> Publish(const std::string& toolkit, const std::string& document,
                                               const std::string& options) {
        record_ = {};
        desk::DeskHost host({*desk::ToSystem({VENTRIX_DATA_FOLDER}), false, {}, {}});
        const desk::XsltSettings xslt;
        host.AddClient("QlXSLT", desk::MakeXsltClient(xslt, access_, record_));
        host.AddClient("QlDispatcher", desk::MakeDispatcherClient({.catalog = {catalog_}}));
        const desk::DitaOtSettings settings{.toolkit = toolkit, .dataFolder = {VENTRIX_DATA_FOLDER}};
        host.AddClient("Dita OT", desk::MakeDitaOtClient(settings, access_, record_));
        EXPECT_EQ(host.LoadModule({VENTRIX_MODULE}), "");
        const auto id =
            host.AddDocument({drives_.Seen(document)},
                             desk::ListDocumentFiles(desk::FromFilesystem(drives_.Native(document))));
        const std::string arguments =
            " -docId " + std::to_string(id) + drives_.Seen(R"( -logFile C:\log.txt )");
        host.CallModule("Validate" + arguments);
        const auto reply =
            host.CallModule("Publish" + arguments + drives_.Seen(R"(-outputFolder C:\out\ )" + options));
        EXPECT_EQ(record_.failed, 0) << record_.reason;
        std::map<std::string, std::string> pages;
        if (!reply || reply->size() != 3) {
            ADD_FAILURE() << "no reply";
            return pages;
        }
        EXPECT_EQ(std::get<std::int32_t>((*reply)[0]), 0);
        resultFolder_ = std::get<std::string>((*reply)[1]);
        const std::filesystem::path folder = drives_.Native(resultFolder_);
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(drives_.Native(R"(C:\out\)"))) {
            if (entry.path().extension() == ".html") {
                pages[platform::Utf8FromPath(entry.path().lexically_relative(folder))] =
                    drives_.Read(*platform::ToSystem(platform::Utf8FromPath(entry.path())));
            }
        }
        return pages;
    }
    void CopyExamples() {
        std::filesystem::copy(VENTRIX_EXAMPLES_FOLDER, drives_.Native(R"(C:\src)"),
                              std::filesystem::copy_options::recursive);
    }
    static void ExpectNoMarkerWord(const std::string& name, const std::string& page) {
        for (const std::string& text : Found(page, "//text()")) {
            for (const char* word : kMarkerWords) {
                EXPECT_EQ(text.find(word), std::string::npos) << name << ": " << text;
            }
        }
    }
    TestDrives drives_{TestDrives::For::kLibraries};
    std::string catalog_;       ///< A native path; empty for the machine's own catalogs only.
    std::string resultFolder_;  ///< Of the last reply.
    desk::FileAccess access_;
    desk::TransformationRecord record_;
};

}  // namespace ventrix::test
