# Reading XML.
set(PEDVAR_XML_SOURCES
    xml/expat_parser.cpp)
set(PEDVAR_XML_LIBRARIES EXPAT::EXPAT)
