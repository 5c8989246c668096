#ifndef KALMO_FRAMEWORK_LANGUAGE_H
#define KALMO_FRAMEWORK_LANGUAGE_H

namespace kalmo {

/// Languages by their primary Windows identifiers.
constexpr int LANGUE_ANGLAIS = 9;
constexpr int LANGUE_ESPAGNOL = 10;
constexpr int LANGUE_FRANCAIS = 12;

/// What the framework knows about the process as a whole.
class CInformationModule {
  public:
    /// The current language of the texts: 12 French, 10 Spanish, any other value English.
    static int ms_nLangueFramework;
    /// Where the texts look the current language up; points at ms_nLangueFramework unless redirected.
    static int* ms_pnLangueFramework;
};

/// The language that the three environment values ask for: the first that is not empty decides, "fr..." for
/// French, "es..." for Spanish, anything else for English. A null pointer counts as empty.
int nChoisitLangue(const char* pszLcAll, const char* pszLcMessages, const char* pszLang);

/// Sets the current language from LC_ALL, LC_MESSAGES and LANG. The program's start calls it once.
void SetLangueFramework();

}  // namespace kalmo

#endif
