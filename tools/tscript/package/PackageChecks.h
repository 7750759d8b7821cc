// Check of the packages of the installation.
#pragma once

class CheckList;

// Opens every package of the folder "Scripts": it must be authentic with the store's key, have a script, and
// belong to this site, to this NQ2 database and to an installed component.
void checkPackages(CheckList& list);
