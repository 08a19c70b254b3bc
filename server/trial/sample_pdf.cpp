#include "server/trial/sample.h"

#include <cstdio>

namespace trial {
namespace {

// A literal string of PDF: parentheses and backslashes are escaped.
std::string Literal(std::string_view text) {
    std::string literal = "(";
    for (char c : text) {
        if (c == '(' || c == ')' || c == '\\')
            literal.push_back('\\');
        literal.push_back(c);
    }
    return literal + ")";
}

std::string PageContent(const std::vector<std::string>& lines) {
    std::string content = "BT /F1 24 Tf 72 750 Td 0 -36 TD";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i == 1)
            content += " /F1 12 Tf 18 TL";
        content += " " + Literal(lines[i]) + " Tj T*";
    }
    return content + " ET\n";
}

/// Collects numbered objects and knows at which byte each begins.
class Body {
public:
    void Add(const std::string& object) {
        m_offsets.push_back(m_text.size());
        m_text += std::to_string(m_offsets.size()) + " 0 obj\n" + object + "\nendobj\n";
    }

    std::string Finish() {
        const std::size_t table = m_text.size();
        m_text += "xref\n0 " + std::to_string(m_offsets.size() + 1) + "\n0000000000 65535 f \n";
        for (std::size_t offset : m_offsets) {
            char entry[32];
            std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", offset);
            m_text += entry;
        }
        m_text += "trailer\n<< /Size " + std::to_string(m_offsets.size() + 1) + " /Root 1 0 R /Info 3 0 R >>\nstartxref\n" +
                  std::to_string(table) + "\n%%EOF\n";
        return m_text;
    }

private:
    std::string m_text = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
    std::vector<std::size_t> m_offsets;
};

} // namespace

std::string MakePdf(std::string_view title, const std::vector<std::vector<std::string>>& pages) {
    // Objects 1 to 4 are catalog, page tree, information and font; then come two a page.
    constexpr std::size_t first_page = 5;
    std::string kids;
    for (std::size_t i = 0; i < pages.size(); ++i)
        kids += std::to_string(first_page + 2 * i) + " 0 R ";
    Body body;
    body.Add("<< /Type /Catalog /Pages 2 0 R >>");
    body.Add("<< /Type /Pages /Kids [ " + kids + "] /Count " + std::to_string(pages.size()) + " >>");
    body.Add("<< /Title " + Literal(title) + " /Producer (kov-server) >>");
    body.Add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>");
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::string content = PageContent(pages[i]);
        body.Add("<< /Type /Page /Parent 2 0 R /MediaBox [ 0 0 595 842 ] /Resources << /Font << /F1 4 0 R >> >> /Contents " +
                 std::to_string(first_page + 2 * i + 1) + " 0 R >>");
        body.Add("<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "endstream");
    }
    return body.Finish();
}

} // namespace trial
