#pragma once

#include <QString>
#include <QStringView>
#include <optional>

namespace torv {

class Platform;

// The one element extractor. `strElementStart` is the opening tag with its brackets
// ("<WEIGHT>"); the value is the text between the first opening tag and the first closing
// tag of that name, both searched from the start of `strXML`. Returns false (value
// unchanged) when either tag is missing.
// - A tag argument without its "<" or ">" is a programming error: the message names the
//   previous content of `strElementData` and the program ends.
// - Positions are 16-bit: a text longer than 32767 characters raises Overflow.
// - A closing tag before the opening tag gives a negative length: error 5.
bool Get_XML_Element_Data(Platform& platform, const QString& strXML, const QString& strElementStart,
                          QString& strElementData);

// The same search without the panel's limits, for programs without a panel: the text between
// the first `openTag` ("<WEIGHT>") and the first closing tag after it, at any position;
// nothing when either is missing.
std::optional<QStringView> elementText(QStringView xml, QStringView openTag);

// The raw-answer view: every "><" becomes ">" CR LF "<", one tag a line.
QString rawAnswerText(const QString& response);

// Writes an answer to the file `sXML_Response_FileName` + ".rsp" (replacing it), followed by
// a line break. Nothing calls it; it is there for tracing a card by hand.
void XML_Response(const QString& sXML_Response_FileName, const QString& sXML_Response_String);

} // namespace torv
