#ifndef KALMO_TUI_DIALOGS_TEXT_NUMBER_H
#define KALMO_TUI_DIALOGS_TEXT_NUMBER_H

/// The texts that the installer's dialogs show, by their numbers.
namespace kalmo {

constexpr unsigned TEXTE_ATTENTION = 4154;  ///< Title of error and question boxes.

constexpr unsigned TEXTE_TITRE_ACTION = 4285;
constexpr unsigned TEXTE_ACTION_MISE_A_JOUR = 4286;
constexpr unsigned TEXTE_ACTION_INSTALLER = 4287;
constexpr unsigned TEXTE_ACTION_DESINSTALLER = 4322;

constexpr unsigned TEXTE_TITRE_MISE_A_JOUR = 4290;      ///< Above the servers to upgrade.
constexpr unsigned TEXTE_TITRE_DESINSTALLATION = 4330;  ///< Above the servers to uninstall.

constexpr unsigned TEXTE_NOM_SERVEUR = 4147;
constexpr unsigned TEXTE_NOM_SERVEUR_PROPOSE = 4548;
constexpr unsigned TEXTE_PORT = 4148;
constexpr unsigned TEXTE_COMPTE_SYSTEME = 4659;
constexpr unsigned TEXTE_COMPTE_INCONNU = 4661;  ///< Insert 1: the account.
constexpr unsigned TEXTE_CONFLIT_NOM = 4299;     ///< Insert 1: the name.
constexpr unsigned TEXTE_CONFLIT_PORT = 4300;    ///< Inserts: the port as an int, the server that uses it.
constexpr unsigned TEXTE_NOM_IMPOSSIBLE = 4169;  ///< Insert 1: the name.

constexpr unsigned TEXTE_TITRE_COMPTE = 9766;
constexpr unsigned TEXTE_COMPTE = 9767;
constexpr unsigned TEXTE_MOT_DE_PASSE = 9768;

constexpr unsigned TEXTE_TELEMETRIE = 9218;
constexpr unsigned TEXTE_TELEMETRIE_ACTIVE = 9219;

constexpr unsigned TEXTE_INSTALLATION = 4171;

}  // namespace kalmo

#endif
