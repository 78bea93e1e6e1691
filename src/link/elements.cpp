#include "elements.h"

#include "base/platform.h"
#include "base/runtime_error.h"

#include <QFile>

namespace torv {

namespace {
constexpr qsizetype kMaxPosition = 32767; // positions and lengths are 16-bit
}

bool Get_XML_Element_Data(Platform& platform, const QString& strXML, const QString& strElementStart,
                          QString& strElementData) {
    if (!strElementStart.startsWith(QLatin1Char('<')) ||
        !strElementStart.endsWith(QLatin1Char('>'))) {
        // Names the output's previous content, not the bad tag.
        platform.messageBox(QStringLiteral("Invalid XML element:") + strElementData +
                            QStringLiteral("\r\n At least one of '<','>' is absent "));
        platform.endProgram();
    }
    if (strXML.size() > kMaxPosition) raiseOverflow();

    const qsizetype p1 = strXML.indexOf(strElementStart);
    if (p1 < 0) return false;
    const QString closing = QStringLiteral("</") + strElementStart.mid(1);
    const qsizetype p2 = strXML.indexOf(closing);
    if (p2 < 0) return false;

    const qsizetype length = p2 - p1 - strElementStart.size();
    // A closing tag ahead of the opening one: the run-time's Mid refuses a negative length.
    if (length < 0) throw RuntimeError(RuntimeError::InvalidCall);
    strElementData = strXML.mid(p1 + strElementStart.size(), length);
    return true;
}

QString rawAnswerText(const QString& response) {
    QString text = response;
    text.replace(QLatin1String("><"), QLatin1String(">\r\n<"));
    return text;
}

bool showErrorElements(Platform& platform, const QString& answer, QString& codeText,
                       color::Color& codeFore, QString& descrText, color::Color& descrFore) {
    QString value;
    const bool haveCode =
        Get_XML_Element_Data(platform, answer, QStringLiteral("<ERROR_CODE>"), value);
    if (haveCode) {
        const color::Color fore = value == QLatin1String("0") ? color::Black : color::Red;
        codeFore = fore;
        descrFore = fore;
        codeText = value;
    }
    if (Get_XML_Element_Data(platform, answer, QStringLiteral("<ERROR_DESCRIPTION>"), value))
        descrText = value;
    return haveCode;
}

void XML_Response(const QString& sXML_Response_FileName, const QString& sXML_Response_String) {
    QFile file(sXML_Response_FileName + QStringLiteral(".rsp"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw RuntimeError(75); // Path/File access error
    const QByteArray line = sXML_Response_String.toLatin1() + "\r\n";
    if (file.write(line) != line.size()) throw RuntimeError(61); // Disk full
    if (!file.flush()) throw RuntimeError(61);
}

} // namespace torv
