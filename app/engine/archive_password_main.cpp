// Prints the password that the installer sets for enciphered payload entries. Not shipped.

#include <cstdio>

#include "app/engine/passwords.h"
#include "framework/conversion.h"

int main() {
    std::puts(kalmo::csToUTF8(kalmo::csGetArchivePassword()).pszGet());
    return 0;
}
