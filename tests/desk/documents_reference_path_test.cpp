#include <gtest/gtest.h>

#include "desk/xml/reference_path.h"
#include "platform/drives.h"
#include "platform/native_roots.h"

namespace ventrix::desk {
namespace {

TEST(ReferencePath, UrlsFilesAndRemarksAreDistinguished) {
    platform::SetProcessDrives({{"Z:\\", "/"}, {"C:\\", "/srv/c"}});
    const struct {
        const char *reference, *url, *path;
        bool remarked;
    } rows[] = {
        {"a.dita", "", "/docs/maps/a.dita", false},
        {"../images/x.png#frame", "", "/docs/images/x.png", false},
        {"./a/.././b.dita", "", "/docs/maps/b.dita", false},
        {"../../../../a.dita", "", "/a.dita", false},  // never above the root
        {"sub//a.dita", "", "/docs/maps/sub/a.dita", false},
        {"a%20b%C3%A4.dita", "", "/docs/maps/a b\xC3\xA4.dita", false},
        {"100%.dita", "", "/docs/maps/100%.dita", false},
        {"50%zz.dita", "", "/docs/maps/50%zz.dita", false},
        {"a%2", "", "/docs/maps/a%2", false},
        {"/abs/a.dita", "", "/abs/a.dita", false},
        {"file:///abs/a%20b.dita", "", "/abs/a b.dita", false},
        {"file:/abs/a.dita", "", "/abs/a.dita", false},
        {"FILE://localhost/abs/a.dita", "", "/abs/a.dita", false},
        {"file:///C:/docs/a.dita", "", "/srv/c/docs/a.dita", false},
        {"C:/docs/a.dita", "", "/srv/c/docs/a.dita", false},
        {"c:\\docs\\a.dita", "", "/srv/c/docs/a.dita", false},
        {"images\\x.png", "", "", true},
        {"a%5Cb.png", "", "", true},
        {"a%0Ab.png", "", "", true},
        {"a%00b.png", "", "", true},
        {"a%FFb.png", "", "", true},
        {"http://example.org/a?b#c", "http://example.org/a?b#c", "", false},
        {"HTTPS://example.org/", "HTTPS://example.org/", "", false},
        {"mailto:a@example.org", "", "", false},
        {"#frag", "", "", false},
    };
    // Only a table of drives shows that there is none.
    const bool isSystemDrive = platform::SystemHasDrives();
    EXPECT_EQ(TargetOf("Q:/docs/a.dita", {"/docs/maps/"}).path.utf8, isSystemDrive ? "Q:/docs/a.dita" : "");
    EXPECT_EQ(TargetOf("Q:/docs/a.dita", {"/docs/maps/"}).remark.empty(), isSystemDrive);
    for (const auto& row : rows) {
        const ReferenceTarget target = TargetOf(row.reference, {"/docs/maps/"});
        EXPECT_EQ(target.url, row.url) << row.reference;
        EXPECT_EQ(target.path.utf8, row.path) << row.reference;
        EXPECT_EQ(!target.remark.empty(), row.remarked) << row.reference;
    }
}

}  // namespace
}  // namespace ventrix::desk
