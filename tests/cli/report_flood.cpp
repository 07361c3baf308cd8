// Appends report lines until it is killed: report_flood FILE TAG
#include "Report.h"

#include <string>

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    Report::Writer writer(argv[1]);
    Report::Entry entry;
    entry.kind = "wpDocument";
    entry.family = "WordPerfect 6/7/8/9/10/11/12/X3";
    entry.job = "WordPerfect document \u2192 ODT";
    entry.status = Report::Status::convertedWithLosses;
    entry.sha256 = std::string(64, 'a');
    entry.outputSha256 = std::string(64, 'b');
    for (int i = 0; i < 12; ++i)
        entry.losses.push_back("a feature that did not survive, number " + std::to_string(i) +
                               "\t\"quoted\"");
    for (long n = 0;; ++n) {
        entry.input =
            "/archive/" + std::string(argv[2]) + "/" + std::to_string(n) + "/Brief \"\xc3\xa4\" \xff.wpd";
        entry.output = "/out/" + std::to_string(n) + ".odt";
        entry.size = static_cast<std::uintmax_t>(n);
        entry.milliseconds = n;
        writer.write(entry);
    }
}
