#include <string>

#include <gtest/gtest.h>

#include "core/runtimeerror.h"
#include "platform/settingsstore.h"
#include "platform/utf8.h"

using namespace fleetwright::platform;
using fleetwright::RuntimeError;

TEST(SettingsStore, SettingToBool)
{
    struct Row
    {
        const char16_t *text;
        bool value;
    };
    const Row rows[] = {
        {u"1", true},       {u"0", false},     {u"-1", true},         {u"+0", false},    {u" 1 ", true},
        {u"\t0\t", false},  {u"00", false},    {u"0.0", false},       {u".5", true},     {u"2.", true},
        {u"-0.000", false}, {u"1e3", true},    {u"0E5", false},       {u"1D2", true},    {u"2.5e-3", true},
        {u"1e-400", false}, // too small for a double: zero
        {u"&H10", true},    {u"&h0", false},   {u"&HFFFFFFFF", true}, {u"&O17", true},   {u"&o00", false},
        {u"True", true},    {u"FALSE", false}, {u"  true ", true},    {u"false", false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(toUtf8(row.text));
        EXPECT_EQ(settingToBool(row.text), row.value);
    }
}

TEST(SettingsStore, SettingToBoolRefuses)
{
    for (const char16_t *text : {u"", u"   ", u"yes", u"1x", u"e5", u"1e", u"1e+", u"1..2", u"--1", u"&H", u"&HG",
                                 u"&O8", u"&X1", u"Tru", u"True1", u"1,5", u"- 1"}) {
        SCOPED_TRACE(toUtf8(text));
        try {
            settingToBool(text);
            ADD_FAILURE() << "no error";
        } catch (const RuntimeError &error) {
            EXPECT_EQ(error.number(), 13);
            EXPECT_EQ(error.description(), u"Type mismatch");
        }
    }
    // A number too large for the run time's numbers overflows rather than mismatches.
    for (const char16_t *text : {u"1e400", u"&H100000000", u"&O40000000000"}) {
        SCOPED_TRACE(toUtf8(text));
        try {
            settingToBool(text);
            ADD_FAILURE() << "no error";
        } catch (const RuntimeError &error) {
            EXPECT_EQ(error.number(), 6);
        }
    }
}

TEST(SettingsStore, Names)
{
    const SettingsStore store;
    EXPECT_EQ(store.application(), u"\u00A9 Corvane Tools");
    EXPECT_EQ(store.section(), u"Fleetwright");
}
