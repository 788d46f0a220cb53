// What the command line asks for. The table of options is the one place that knows their names: from it come
// the parser, the usage text, the manual page and the completion of shells.
#pragma once

#include "driver/session/ArgParse.h"
#include "driver/session/Reporter.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <variant>

class SessionFace;

class Options : public ArgParse {
public:
    struct Row {
        // What the option does: sets a flag to a value, keeps its argument, adds it to a list, or acts.
        struct Flag {
            bool Options::*member;
            bool value;
        };
        using Action = void (Options::*)(const char* option, const char* value);
        using Effect = std::variant<Flag, QString Options::*, QStringList Options::*, Action>;

        const char* text;
        const char* argument; // as the usage text names it; null for none. It is the next word.
        const char* help;     // one line
        const char* group;    // heading in the manual page
        Effect effect;
        bool inUsage = true;
        int helpColumn = 25; // in the usage text, counted from the option
    };
    // In the order of the usage text.
    static std::span<const Row> table();

    // Neither is owned. Lists that are printed while the words are read go to the face.
    Options(Reporter& reporter, SessionFace& face);

    // A word joins the target program's arguments once -serve has been read, the load files before.
    void onArgument(const char* word) override;

    // The usage text behind the version banner; with `all` the further options stand behind it.
    static QString usage(bool all);

    QString targetName;
    bool listProperties = false;
    QStringList propertySettings; // PROPERTY=VALUE
    QString solutionFile;
    QString projectName;
    QString configuration;
    QStringList loadFileNames;
    QString fileType;
    std::optional<unsigned> loadAddress;
    bool download = true;
    bool differentialDownload = true;
    bool verify = true;
    bool disconnect = true;
    QString entry; // "0x" and digits, or a symbol
    bool serve = false;
    QStringList targetArguments{QString()}; // the first stands at the place of argv[0]
    bool debug = false;
    bool dap = false;
    QString scriptFile;
    QString breakSymbol;
    bool quiet = false;
    bool verbose = false;
    bool help = false;
    bool version = false;
    bool strict = false; // an error in the options ends the session before anything is touched
    bool erase = false;
    bool reset = false;
    bool dryRun = false;
    QString progress; // "bar", "lines" or "none"
    QString benchDirectory;
    QString packagesDirectory;
    QString templatesFile;

private:
    std::optional<unsigned> number(const char* what, const char* value);
    void setEntry(const char*, const char* value);
    void setLoadAddress(const char*, const char* value);
    void setProgress(const char*, const char* value);
    void listOptions(const char*, const char*);
    void listTargets(const char*, const char*);
    void listFileTypes(const char*, const char*);

    SessionFace& m_face;
};
