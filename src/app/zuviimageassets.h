#pragma once

#include <QString>
#include <QUrl>

// The application's own pictures (tab icons, the mascot, profile entry
// icons), bundled as SVG resources and looked up by name the way screens ask
// for them: "tab_recommend", "mascot_login_required", ...
class ZuviImageAssets
{
public:
    // The resource URL of the named picture, or an empty URL when the
    // application carries no picture of that name.
    static QUrl urlForImageNamed(const QString &name);
    static bool hasImageNamed(const QString &name);
};
