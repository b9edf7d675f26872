# Headers, package configuration files.
