// What a user should try when a session ends with an error whose text is fixed. One table for all of them.
#pragma once

#include <QString>

// One line; null for a text that has no hint.
QString hintFor(const QString& message);
