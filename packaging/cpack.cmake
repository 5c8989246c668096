# The .deb and the .rpm of one staged file tree. tools/make_release.sh calls cpack with this file, tells what it is
# about in variables of the environment, and leaves everything else to be the same each time:
#
#   KALMO_TREE        the file tree
#   KALMO_VERSION     the version
#   KALMO_MAINTAINER  name and mail address, as both kinds of package want them
#   KALMO_OUT         where the packages go
set(CPACK_PACKAGE_NAME kalmoinstall)
set(CPACK_PACKAGE_VERSION $ENV{KALMO_VERSION})
set(CPACK_PACKAGE_FILE_NAME kalmoinstall)
set(CPACK_PACKAGE_CONTACT $ENV{KALMO_MAINTAINER})
set(CPACK_PACKAGE_VENDOR ZDSQL)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "installer of the ZDSQL database server")
set(CPACK_PACKAGE_DESCRIPTION
  "kalmoinstall installs, upgrades and uninstalls instances of the ZDSQL
database server on machines with systemd and with SysV init scripts. In a
terminal it leads through everything with dialogs; with a parameter file it
works unattended. The package holds the server's files, none of which is
installed before kalmoinstall is run. Removing the package leaves installed
instances as they are.")
set(CPACK_INSTALLED_DIRECTORIES "$ENV{KALMO_TREE};/")
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_PACKAGE_DIRECTORY $ENV{KALMO_OUT})
set(CPACK_THREADS 1)

# Every dpkg and every rpm reads gzip, and the payload, nearly all of it, is compressed already.
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)
set(CPACK_RPM_COMPRESSION_TYPE gzip)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_RELEASE 1)
set(CPACK_RPM_PACKAGE_LICENSE "see /usr/share/doc/kalmoinstall/copyright")
set(CPACK_RPM_PACKAGE_AUTOREQPROV no)
set(CPACK_RPM_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})
# Folders of the system, which are not ours, and what is for Debian alone.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST
  /usr /usr/lib /usr/sbin /usr/share /usr/share/doc /usr/share/man /usr/share/man/man5 /usr/share/man/man8
  /usr/share/doc/kalmoinstall/changelog.Debian.gz
  /usr/share/lintian /usr/share/lintian/overrides /usr/share/lintian/overrides/kalmoinstall)
set(CPACK_RPM_SPEC_MORE_DEFINE
"%define _buildhost localhost
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none
%define __os_install_post %{nil}")
