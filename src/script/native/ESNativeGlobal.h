// The functions of the global object, and the directories in which `load` looks for files.
#pragma once

#include "script/native/ESNative.h"

#include <QStringList>

class ESNativeGlobal : public ESNative {
public:
    ESNativeGlobal();
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;

    // Appends a directory; they are tried in order, after the name as it stands.
    void addToLoadPath(const QString& directory) { m_loadPath.append(directory); }

private:
    bool load(ESContext* context, const QString& name);
    static bool evalFromFile(ESContext* context, const QString& file);

    QStringList m_loadPath;
};
