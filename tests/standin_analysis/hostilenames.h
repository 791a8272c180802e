#pragma once

#include <QByteArray>
#include <QByteArrayList>

/// Names of sources that would run something, or arrive changed, if anything but a list of arguments carried them. What
/// they would run makes a file named "canary" in the working folder.
inline QByteArrayList hostileNames()
{
    return {
        "MACHINE (Camera 1)",
        "x\" & echo hit > canary & \"",
        "x\" | echo hit > canary",
        "x\" && touch canary && \"",
        "x\"; touch canary; \"",
        "x\n touch canary\n",
        "x\r\necho hit > canary\r\n",
        "$(touch canary)",
        "`touch canary`",
        "'; touch canary; '",
        "%PATH%",
        "%COMSPEC% /c echo hit > canary",
        "^& echo hit > canary",
        "!PATH!",
        "> canary",
        "x > canary 2>&1",
        "%s%n%1%2",
        "*?[a-z]{a,b}~",
        "ends in a backslash\\",
        "ends in two\\\\",
        "backslash and quotation mark\\\"",
        "two and quotation mark\\\\\"",
        "\"",
        "\"\"\"",
        "\"quoted\"",
        " blanks  inside and around ",
        "tab\there",
        "x\" /time:5",
        "x\" /time:5 /source:\"y",
        "x\" /time:",
        "\" /source:\"",
        "/source:y /time:1",
        "--help",
        "\xe6\x9d\xb1\xe4\xba\xac \xe3\x82\xab\xe3\x83\xa1\xe3\x83\xa9 1",
        "K\xc3\x96LN (Kamera \xf0\x9f\x8e\xa5)",
        "\x01\x02\x1b[31m\x7f",
    };
}
