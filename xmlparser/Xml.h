// Xml.h: everything a user of the XML library needs, in namespace Xml: the tree of nodes, its
// lookups and editing operations, the parser that builds it from text, and generation of XML
// text. Include only this header.
#pragma once

#include "xmlparser/Attribute.h"
#include "xmlparser/CharacterData.h"
#include "xmlparser/Document.h"
#include "xmlparser/Element.h"
#include "xmlparser/Exception.h"
#include "xmlparser/GenerateContext.h"
#include "xmlparser/Memory.h"
#include "xmlparser/Node.h"
#include "xmlparser/Parser.h"
#include "xmlparser/ParsingException.h"
#include "xmlparser/Reference.h"
#include "xmlparser/TString.h"
#include "xmlparser/Value.h"
