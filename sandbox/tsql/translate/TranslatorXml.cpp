// FOR XML: the rows of a query as one XML string.
#include "translate/Translator.h"

namespace tsql {

namespace {

// Encodes characters that XML names cannot contain: a space becomes _x0020_.
std::string xmlName(std::string_view name) {
    std::string result;
    while (!name.empty()) {
        const std::string_view before = name;
        const char32_t c = nextCharacter(name);
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0xC0;
        const bool inside = (c >= '0' && c <= '9') || c == '-' || c == '.';
        if (letter || (inside && !result.empty())) {
            result += before.substr(0, before.size() - name.size());
            continue;
        }
        const std::byte code[] = {std::byte(c >> 8 & 0xFFU), std::byte(c & 0xFFU)};
        result += "_x" + hexDigits(code) + "_";
    }
    return result;
}

// Returns a call of ts_xml(cell), which gives the XML text of the cell, or NULL for NULL.
std::string cellText(const OutputColumn& output, bool attribute) {
    const TypeId id = output.type.id;
    if (isBinary(id)) throw unsupported("binary columns in FOR XML");
    if (attribute && id == TypeId::Xml) throw unsupported("xml in an attribute of FOR XML");
    return "ts_xml(" + output.alias + "," + std::to_string(encodeType(output.type)) +
           (attribute ? ",1)" : ",0)");
}

std::string inTag(const std::string& tag, const std::string& sql) {
    return quotedText("<" + tag + ">") + " || " + sql + " || " + quotedText("</" + tag + ">");
}

std::string orNothing(const std::string& sql) {
    return " || ifnull(" + sql + ", '')";
}

}  // namespace

QueryText Translator::forXml(const QueryText& rows, const ForXml& xml) const {
    if (!m_assignments.empty()) throw unsupported("SELECT @variable = ... FOR XML");
    std::string attributes = "''", content = "''";
    for (const auto& output : rows.columns) {
        const std::string& name = output.name;
        const bool isContent = name.empty() || name == "*" || name == "text()" || name == "node()";
        if (xml.path && isContent) {
            content += orNothing(cellText(output, /*attribute=*/false));
        } else if (name.empty()) {
            throw sqlError(kUnnamedXmlColumn);
        } else if (!xml.elements || (xml.path && name.starts_with('@'))) {
            if (content.size() > 2) throw sqlError(kAttributeAfterElement, {name});
            if (xml.row.empty()) throw sqlError(kRowTagOmitted);
            const std::string tag = quotedText(" " + xmlName(name.substr(xml.path)) + "=\"");
            attributes += orNothing(tag + " || " + cellText(output, /*attribute=*/true) + " || '\"'");
        } else {
            if (xml.path && name.find_first_of("/()") != std::string::npos)
                throw unsupported("the path '" + name + "' in FOR XML PATH");
            content += orNothing(inTag(xmlName(name), cellText(output, /*attribute=*/false)));
        }
    }
    const std::string row = xmlName(xml.row), root = xmlName(xml.root);
    std::string one = "c";
    if (!row.empty())
        one = quotedText("<" + row) + " || a || CASE c WHEN '' THEN '/>' ELSE '>' || c || " +
              quotedText("</" + row + ">") + " END";
    std::string all = "group_concat(" + one + ", '')";
    if (!root.empty()) all = inTag(root, all);
    const SqlType type = xml.typed ? simpleType(TypeId::Xml) : nvarcharType(SqlType::kMax);
    return {"SELECT " + all + " AS c1 FROM (SELECT " + attributes + " AS a, " + content + " AS c FROM (" +
                rows.sql + ")) HAVING count(*) > 0",
            {{{"XML_F52E2B61-18A1-11d1-B105-00805F49916B", type, true, false}, "c1"}},
            /*oneRow=*/true};
}

}  // namespace tsql
