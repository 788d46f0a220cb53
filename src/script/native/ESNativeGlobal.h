// The functions of the global object, and the directories in which `load` looks for files.
#pragma once

#include "script/engine/ESContext.h"
#include "script/native/ESNative.h"

#include <QStringList>

class ESNativeGlobal : public ESNative {
public:
    ESNativeGlobal() : ESNative("global") {}
    // The one of a context.
    static ESNativeGlobal* of(ESContext* context);
    void install(ESContext* context) override;

    // Appends a directory; they are tried in order, after the name as it stands.
    void addToLoadPath(const QString& directory) { m_loadPath.append(directory); }
    // Evaluates the first file that can be opened; false when none can.
    bool load(ESContext* context, const QString& name);

private:
    static bool evalFromFile(ESContext* context, const QString& file);

    QStringList m_loadPath;
};
