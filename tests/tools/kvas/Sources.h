// Assembles texts and reads the executable back with the tool's own reader.
#pragma once

#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "support/HString.h"
#include "support/MAXQ30Records.h" // installs the record
#include "support/TempDir.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Link.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <gtest/gtest.h>

inline std::string repeat(const std::string& text, int count)
{
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

class Sources : public ::testing::Test {
protected:
    Sources() { EXPECT_TRUE(MAXQ30RecordsInstalled); }
    ~Sources() override { ZOFFReader::release(module); }

    // Errors, with the names of files cut down to their last part; empty when all went well.
    std::string link(std::initializer_list<std::string> texts)
    {
        job.sources.clear();
        for (const std::string& text : texts) {
            std::string name = "source" + std::to_string(job.sources.size() + 1) + ".s";
            job.sources.push_back(dir.write(name, text));
        }
        job.moduleName = "test";
        kvas::Diagnostics diagnostics;
        bytes = kvas::link(job, diagnostics);
        std::string errors = diagnostics.text();
        for (size_t at; (at = errors.find(dir.path() + "/")) != std::string::npos;)
            errors.erase(at, dir.path().size() + 1);
        EXPECT_EQ(errors.empty(), !bytes.empty());
        return errors;
    }

    // Links, expects success, and opens the result as `module`.
    void load(std::initializer_list<std::string> texts)
    {
        ASSERT_EQ(link(texts), "");
        ZOFFReader::release(module);
        std::span<const unsigned char> all(reinterpret_cast<const unsigned char*>(bytes.data()),
                                           bytes.size());
        ZOFFMAXQ30Reader reader(all, true);
        module = reader.readFile(false);
        ASSERT_NE(module, nullptr);
    }

    ZOFFSection* section(const char* name) const { return module->findSection(HString::intern(name)); }

    // The bytes of a section from its lowest address on, in hexadecimal.
    std::string image(const char* name) const
    {
        ZOFFSection* s = section(name);
        if (!s)
            return "no section";
        s->computeSectionMetrics();
        std::vector<uint8_t> buffer(size_t(s->getSize()));
        s->dump(buffer.size(), buffer.data());
        std::string text;
        char hex[4];
        for (uint8_t byte : buffer) {
            snprintf(hex, sizeof hex, "%02x", byte);
            text += hex;
        }
        return text;
    }

    ZOFFSymbol* symbol(const char* name) const
    {
        const HString* wanted = HString::intern(name);
        for (ZOFFSymbol* s : module->allSymbols())
            if (s->name() == wanted)
                return s;
        return nullptr;
    }

    // -1 when there is no such symbol, or it has no value.
    int64_t valueOf(const char* name) const
    {
        ZOFFSymbol* s = symbol(name);
        ZOFFEvaluation evaluation = s ? s->evaluate() : ZOFFEvaluation::failure("");
        return evaluation.unresolved ? -1 : evaluation.value;
    }

    std::string typeOf(const char* name) const
    {
        ZOFFSymbol* s = symbol(name);
        return s && s->type() ? s->type()->getName()->c_str() : "none";
    }

    TempDir dir;
    kvas::Job job;
    std::string bytes;
    ZOFFModule* module = nullptr;
};
