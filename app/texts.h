#ifndef KALMO_APP_TEXTS_H
#define KALMO_APP_TEXTS_H

#include "tui/dialogs/text_number.h"
#include "tui/toolkit/dialog_text.h"

/// The texts of the flow, by their numbers. The catalogues tell what each says and takes.
namespace kalmo {

constexpr unsigned TEXTE_AIDE = 4162;  ///< version
constexpr unsigned TEXTE_TERMINAL = 798;
constexpr unsigned TEXTE_AUTRE_INSTALLATEUR = 28865;
constexpr unsigned TEXTE_PAS_ROOT = 0x103C;
constexpr unsigned TEXTE_DONNEES = 0x103D;

constexpr unsigned TEXTE_REPERTOIRE = 0x1031;
constexpr unsigned TEXTE_INSTALLE = 0x103B;
constexpr unsigned TEXTE_ADMIN_SANS_MDP = 0x10C3;        ///< account
constexpr unsigned TEXTE_ADMIN = 0x262B;                 ///< account, password
constexpr unsigned TEXTE_COMPTE_NON_CREE = 0x1236;       ///< system account
constexpr unsigned TEXTE_SANS_JOURNAL = 4161;            ///< command
constexpr unsigned TEXTE_REPERTOIRE_INTROUVABLE = 4166;  ///< directory
constexpr unsigned TEXTE_REPERTOIRE_TROP_LONG = 4167;    ///< directory, bytes too many (int)
constexpr unsigned TEXTE_REPERTOIRE_MASQUE = 4176;       ///< directory, service
constexpr unsigned TEXTE_REPERTOIRE_NON_CREE = 4175;
constexpr unsigned TEXTE_COMPTE_TROP_LONG = 4168;    ///< bytes too many (int)
constexpr unsigned TEXTE_DOSSIER_TEMPORAIRE = 4172;  ///< folder, reason
constexpr unsigned TEXTE_NON_INSTALLE = 4665;        ///< file
constexpr unsigned TEXTE_ILLISIBLE = 4664;           ///< file

constexpr unsigned TEXTE_SANS_PROGRAMME = 4163;      ///< name
constexpr unsigned TEXTE_PROGRAMME_ETRANGER = 4165;  ///< name, command
constexpr unsigned TEXTE_REPERTOIRE_PERDU = 4174;    ///< name, directory
constexpr unsigned TEXTE_ARRETES = 4170;             ///< services, each behind a line end
constexpr unsigned TEXTE_MAJ = 0x10C4;  ///< name, port (int), directory, old version, new version
constexpr unsigned TEXTE_MAJ_QUESTION = 0x10C5;
constexpr unsigned TEXTE_MAJ_ARRET_MANAGER = 0x10C6;
constexpr unsigned TEXTE_MAJ_ARRET_SERVEUR = 0x10C7;  ///< name
constexpr unsigned TEXTE_MAJ_ARRETS = 0x10C8;
constexpr unsigned TEXTE_MAJ_FAITE = 0x10C9;
constexpr unsigned TEXTE_MAJ_JAUGE = 0x10CA;

constexpr unsigned TEXTE_RETRAIT = 0x10E9;  ///< name
constexpr unsigned TEXTE_RETRAIT_ARRET = 0x10E3;
constexpr unsigned TEXTE_RETRAIT_SERVICE = 0x10E4;
constexpr unsigned TEXTE_RETRAIT_FICHIERS = 0x10E5;
constexpr unsigned TEXTE_RETRAIT_GARDE = 0x10EE;
constexpr unsigned TEXTE_RETRAIT_SANS_FICHIER = 4173;      ///< name
constexpr unsigned TEXTE_RETRAIT_SERVICE_ERREUR = 0x10E7;  ///< reason
constexpr unsigned TEXTE_RETRAIT_FICHIER_ERREUR = 0x10E8;  ///< error dump

}  // namespace kalmo

#endif
