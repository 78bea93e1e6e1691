#include "types.h"

namespace torv::sim {

namespace {
struct KindName {
    Fault::Kind kind;
    const char* name;
};
constexpr KindName kKinds[] = {
    {Fault::Kind::Chunked, "chunked"},   {Fault::Kind::Trickle, "trickle"},
    {Fault::Kind::Silent, "silent"},     {Fault::Kind::Refuse, "refuse"},
    {Fault::Kind::Reset, "reset"},       {Fault::Kind::Garbage, "garbage"},
    {Fault::Kind::Oversize, "oversize"}, {Fault::Kind::ErrorCode, "error-code"},
};
} // namespace

QString faultKindName(Fault::Kind kind) {
    for (const auto& k : kKinds)
        if (k.kind == kind) return QString::fromLatin1(k.name);
    return QStringLiteral("none");
}

std::optional<Fault::Kind> faultKindFromName(const QString& name) {
    const QString n = name.trimmed().toLower();
    for (const auto& k : kKinds)
        if (n == QLatin1String(k.name)) return k.kind;
    return std::nullopt;
}

QStringList faultKindNames() {
    QStringList names;
    for (const auto& k : kKinds)
        names << QString::fromLatin1(k.name);
    return names;
}

} // namespace torv::sim
