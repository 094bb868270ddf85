#include "reference/Manual.h"

#include <sstream>

namespace QuorlanProgram {
namespace {

/// Text for roff: hyphens as typed, no line that would be a request.
std::string Escape(std::string const& text) {
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 3, "\xE2\x86\x92") == 0) {  // an arrow
            escaped += "\\(->";
            i += 2;
        } else if (text[i] == '\\') {
            escaped += "\\e";
        } else if (text[i] == '-') {
            escaped += "\\-";
        } else {
            escaped += text[i];
        }
    }
    if (!escaped.empty() && (escaped[0] == '.' || escaped[0] == '\'')) escaped.insert(0, "\\&");
    return escaped;
}

/// Markdown's `code` and **strong** words in bold.
std::string Inline(std::string const& markdown) {
    std::string text;
    bool isBold = false;
    for (std::size_t i = 0; i < markdown.size(); ++i) {
        bool const isStrong = markdown.compare(i, 2, "**") == 0;
        if (isStrong || markdown[i] == '`') {
            isBold = !isBold;
            text += isBold ? "\x01" : "\x02";
            i += isStrong;
        } else if (markdown.compare(i, 2, "\\|") != 0) {
            text += markdown[i];
        }
    }
    std::string roff;
    for (char const c : Escape(text)) roff += c == '\x01' ? "\\fB" : c == '\x02' ? "\\fR" : std::string(1, c);
    return roff;
}

/// The cells of a row of a table.
std::vector<std::string> CellsOf(std::string const& line) {
    std::vector<std::string> cells;
    std::size_t begin = 1;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] != '|' || line[i - 1] == '\\') continue;
        auto const first = line.find_first_not_of(' ', begin), last = line.find_last_not_of(' ', i - 1);
        cells.push_back(last < begin || first > last ? "" : line.substr(first, last - first + 1));
        begin = i + 1;
    }
    return cells;
}

/// Markdown, as far as the manual's texts use it, line by line.
class RoffWriter {
public:
    void Write(std::string const& markdown) {
        std::istringstream lines(WithoutLinks(markdown));
        std::string line;
        begins_ = true;
        while (std::getline(lines, line)) WriteLine(line);
        EndCode();
    }

    std::string const& GetText() const { return text_; }

private:
    void WriteLine(std::string const& line) {
        if (line.rfind("    ", 0) == 0) return WriteCode(line);
        EndCode();
        if (line.empty()) {
            begins_ = true;
            tableRow_ = 0;
        } else if (line[0] == '|') {
            if (++tableRow_ > 2) WriteRow(CellsOf(line));
        } else if (line.rfind("- ", 0) == 0) {
            Add(".IP \\(bu 2");
            Add(Inline(line.substr(2)));
            begins_ = false;
        } else {
            if (begins_) Add(".PP");
            Add(Inline(line.substr(line.find_first_not_of(' '))));
            begins_ = false;
        }
    }

    void WriteCode(std::string const& line) {
        if (!inCode_) text_ += ".PP\n.nf\n.RS\n";
        inCode_ = true;
        Add(Escape(line.substr(4)));
    }

    void EndCode() {
        if (inCode_) text_ += ".RE\n.fi\n";
        inCode_ = false;
    }

    void WriteRow(std::vector<std::string> const& cells) {
        if (cells.empty()) return;
        Add(".TP");
        Add(Inline(cells[0]));
        std::string rest;
        for (std::size_t i = 1; i < cells.size(); ++i) {
            if (!cells[i].empty()) rest += (rest.empty() ? "" : "; ") + cells[i];
        }
        Add(Inline(rest));
    }

    void Add(std::string const& line) { text_ += line + "\n"; }

    std::string text_;
    bool begins_ = true;
    bool inCode_ = false;
    int tableRow_ = 0;
};

std::string DescribeOption(ManualOption const& option) {
    auto const value = option.value.empty() ? "" : " \\fI" + Escape(option.value) + "\\fR";
    auto const standard = option.isRequired         ? " (required)"
                          : option.standard.empty() ? ""
                                                    : " (" + option.standard + ")";
    return ".TP\n\\fB" + Escape(option.names) + "\\fR" + value + "\n" + Escape(option.meaning + standard) + "\n";
}

std::string ToRoff(std::string const& markdown) {
    RoffWriter writer;
    writer.Write(markdown);
    return writer.GetText();
}

}  // namespace

std::string WriteManPage(Manual const& manual, std::string const& version) {
    auto page = ".TH QUORLAN 1 \"\" \"QuorlanTools " + version +
                "\" \"User Commands\"\n"
                ".SH NAME\nquorlan \\- geometry and model tools for building models\n"
                ".SH SYNOPSIS\n"
                ".B quorlan\n.I COMMAND\n[\\fIOPTIONS\\fR] ...\n.br\n"
                ".B quorlan\n[\\fICOMMAND\\fR] \\fB\\-\\-help\\fR\n.br\n"
                ".B quorlan \\-\\-version\n"
                ".SH DESCRIPTION\n" +
                Escape(manual.purpose) + "\n" + ToRoff(manual.text) + ".SH COMMANDS\n";
    for (auto const& command : manual.commands) {
        page += ".SS " + Escape(command.usage) + "\n" + Escape(command.summary) + ".\n";
        for (auto const& option : command.options) page += DescribeOption(option);
        page += ToRoff(command.text);
    }
    return page;
}

}  // namespace QuorlanProgram
