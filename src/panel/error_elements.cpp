#include "error_elements.h"

#include "link/elements.h"

namespace torv {

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

} // namespace torv
