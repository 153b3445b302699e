// The grammar of MOF (DSP0004, annex A), and how the parser recovers from errors.
//
// A missing separator between two statements is assumed. A statement that cannot be parsed is skipped up to its
// semicolon, a list up to its closing bracket. Keywords are valid as names everywhere except as class names.
%skeleton "lalr1.cc"
%require "3.8"
%language "c++"

%define api.namespace {velhost::Mof}
%define api.parser.class {TMofParser}
%define api.value.type {velhost::Mof::TSemantic}
%define api.location.type {velhost::Mof::TSpan}
%define api.token.raw
%define lr.type canonical-lr
%define lr.default-reduction consistent
%define parse.error custom
%locations
%param {velhost::Mof::TScan& scan} {velhost::Mof::TScanner& scanner}
%expect 0

%code requires {
#include "host/schema/mofscan.h"

namespace velhost::Mof {
class TScanner;
}

#define YYLLOC_DEFAULT(result, symbols, count) \
  ((result).begin = YYRHSLOC(symbols, (count) ? 1 : 0).begin, (result).end = YYRHSLOC(symbols, count).end)
}

%code {
#include <array>

#include "host/schema/mofwords.h"

namespace {

using namespace velhost::Mof;

int yylex(TSemantic* value, TSpan* span, TScan&, TScanner& scanner) { return scanner.Next(*value, *span); }

constexpr TSpan kNothing = {0, 0};
constexpr TRange kEmpty = {0, 0};
constexpr TArraySuffix kScalar = {false, 0};
constexpr TInitializer kNoValue = {false, false, {0, 0}, {0, 0}};

// The position of the next list member: lists are ranges of vectors.
template <typename T>
TRange StartOf(const std::vector<T>& members) {
  return {static_cast<std::uint32_t>(members.size()), 0};
}

template <typename T>
TRange UpTo(TRange range, const std::vector<T>& members) {
  range.count = static_cast<std::uint32_t>(members.size()) - range.first;
  return range;
}

TLiteral Plain(ELiteral kind, TSpan span) { return {kind, span, kEmpty}; }

}  // namespace
}

%token END 0
%token LBRACE RBRACE LBRACKET RBRACKET LPAREN RPAREN SEMICOLON COLON COMMA EQUALS PRAGMA
%token CLASS QUALIFIER SCOPE FLAVOR INSTANCE OF AS REF NULLWORD
%token <span> IDENT ALIAS INTEGER REAL BOOLEAN
%token <type> DATATYPE
%token <bits> FLAVORWORD METAELEMENT
%token <literal> STRING CHARACTER BADLITERAL

%type <span> name superClass alias
%type <type> reference
%type <range> qualifierList uses features parameterList parameters assignments values
%type <literal> literal
%type <initializer> initializer array assigned argument
%type <array> suffix bounds
%type <bits> flavors useFlavors flavorWords flavorClause scopeClause metaElements metaElement

%%

file: productions END ;

productions: %empty | productions production ;

production:
  pragma
| qualifierDeclaration
| classDeclaration
| instanceDeclaration
| error SEMICOLON
| error LBRACE junk RBRACE semicolon
;

// The end of a statement. If it is missing, the next statement follows. An error token is only shifted if the parser
// is directly before it, so some rules below are written out instead of having empty parts before the semicolon.
semicolon: SEMICOLON | error ;

// The body of an unknown construct.
junk: %empty | junk junkToken | junk LBRACE junk RBRACE ;
junkToken:
  LBRACKET | RBRACKET | LPAREN | RPAREN | SEMICOLON | COLON | COMMA | EQUALS | PRAGMA | STRING | CHARACTER
| BADLITERAL | INTEGER | REAL | ALIAS | IDENT | DATATYPE | FLAVORWORD | METAELEMENT | CLASS | QUALIFIER | SCOPE
| FLAVOR | INSTANCE | OF | AS | REF | NULLWORD | BOOLEAN
;

name:
  IDENT
| DATATYPE     { $$ = @1; }
| FLAVORWORD   { $$ = @1; }
| METAELEMENT  { $$ = @1; }
| CLASS        { $$ = @1; }
| QUALIFIER    { $$ = @1; }
| SCOPE        { $$ = @1; }
| FLAVOR       { $$ = @1; }
| INSTANCE     { $$ = @1; }
| OF           { $$ = @1; }
| AS           { $$ = @1; }
| REF          { $$ = @1; }
| NULLWORD     { $$ = @1; }
| BOOLEAN
;

pragma:
  PRAGMA name LPAREN STRING RPAREN { scan.AddPragma($name, $STRING); }
| PRAGMA name LPAREN error RPAREN  { yyerrok; }
;

qualifierDeclaration:
  QUALIFIER name COLON DATATYPE suffix assigned COMMA scopeClause semicolon
    { scan.AddQualifier($name, $DATATYPE, $suffix, $assigned, $scopeClause, 0); }
| QUALIFIER name COLON DATATYPE suffix assigned COMMA scopeClause COMMA flavorClause semicolon
    { scan.AddQualifier($name, $DATATYPE, $suffix, $assigned, $scopeClause, $flavorClause); }
| QUALIFIER name COLON DATATYPE suffix assigned COMMA flavorClause COMMA scopeClause semicolon
    { scan.AddQualifier($name, $DATATYPE, $suffix, $assigned, $scopeClause, $flavorClause); }
;

scopeClause: SCOPE LPAREN metaElements RPAREN { $$ = $metaElements; } ;
metaElements:
  metaElement
| metaElements[before] COMMA metaElement { $$ = $before | $metaElement; }
;
metaElement:
  METAELEMENT
| CLASS      { $$ = kScopeClass; }
| QUALIFIER  { $$ = kScopeQualifier; }
;

flavorClause: FLAVOR LPAREN flavors RPAREN { $$ = $flavors; } ;
flavors:
  FLAVORWORD
| flavors[before] COMMA FLAVORWORD { $$ = scan.JoinFlavors($before, $FLAVORWORD, @FLAVORWORD); }
;

qualifierList:
  %empty                        { $$ = kEmpty; }
| LBRACKET uses RBRACKET        { $$ = $uses; }
| LBRACKET error RBRACKET       { $$ = kEmpty; yyerrok; }
;
uses:
  { $<range>$ = StartOf(scan.File().uses); }[start] use { $$ = UpTo($<range>start, scan.File().uses); }
| uses[before] COMMA use        { $$ = UpTo($before, scan.File().uses); }
;
use: name argument useFlavors { scan.AddUse($name, $argument, $useFlavors); } ;
argument:
  %empty                        { $$ = kNoValue; }
| LPAREN literal RPAREN         { $$ = scan.Scalar($literal); }
| array
;
useFlavors: %empty { $$ = 0; } | COLON flavorWords { $$ = $flavorWords; } ;
flavorWords:
  FLAVORWORD
| flavorWords[before] FLAVORWORD { $$ = scan.JoinFlavors($before, $FLAVORWORD, @FLAVORWORD); }
;

classDeclaration:
  qualifierList CLASS IDENT superClass LBRACE features RBRACE semicolon
    { scan.AddClass($qualifierList, $IDENT, $superClass, $features); }
| qualifierList CLASS IDENT superClass LBRACE features error RBRACE semicolon
    { scan.AddClass($qualifierList, $IDENT, $superClass, $features); }
;
superClass: %empty { $$ = kNothing; } | COLON IDENT { $$ = $IDENT; } ;
features:
  %empty                        { $$ = StartOf(scan.File().features); }
| features[before] feature      { $$ = UpTo($before, scan.File().features); }
;
feature:
  qualifierList DATATYPE name semicolon
    { scan.AddFeature($qualifierList, $DATATYPE, $name, kScalar, kNoValue); }
| qualifierList DATATYPE name EQUALS initializer semicolon
    { scan.AddFeature($qualifierList, $DATATYPE, $name, kScalar, $initializer); }
| qualifierList DATATYPE name bounds semicolon
    { scan.AddFeature($qualifierList, $DATATYPE, $name, $bounds, kNoValue); }
| qualifierList DATATYPE name bounds EQUALS initializer semicolon
    { scan.AddFeature($qualifierList, $DATATYPE, $name, $bounds, $initializer); }
| qualifierList reference name semicolon
    { scan.AddFeature($qualifierList, $reference, $name, kScalar, kNoValue); }
| qualifierList reference name EQUALS initializer semicolon
    { scan.AddFeature($qualifierList, $reference, $name, kScalar, $initializer); }
| qualifierList DATATYPE name LPAREN parameterList RPAREN semicolon
    { scan.AddMethod($qualifierList, $DATATYPE, $name, $parameterList); }
| error SEMICOLON               { yyerrok; }
;
reference: IDENT REF { $$ = {TCIMValue::TCIMType::kReference, $IDENT}; } ;
suffix: %empty { $$ = kScalar; } | bounds ;
bounds:
  LBRACKET RBRACKET             { $$ = {true, 0}; }
| LBRACKET INTEGER RBRACKET     { $$ = scan.ArraySize($INTEGER); }
;
assigned: %empty { $$ = kNoValue; } | EQUALS initializer { $$ = $initializer; } ;

parameterList:
  %empty                        { $$ = kEmpty; }
| parameters
| error                         { $$ = kEmpty; }
;
parameters:
  { $<range>$ = StartOf(scan.File().parameters); }[start] parameter
    { $$ = UpTo($<range>start, scan.File().parameters); }
| parameters[before] COMMA parameter { $$ = UpTo($before, scan.File().parameters); }
;
parameter:
  qualifierList DATATYPE name suffix  { scan.AddParameter($qualifierList, $DATATYPE, $name, $suffix); }
| qualifierList reference name suffix { scan.AddParameter($qualifierList, $reference, $name, $suffix); }
;

instanceDeclaration:
  qualifierList INSTANCE OF IDENT alias LBRACE assignments RBRACE semicolon
    { scan.AddInstance($qualifierList, $IDENT, $alias, $assignments); }
| qualifierList INSTANCE OF IDENT alias LBRACE assignments error RBRACE semicolon
    { scan.AddInstance($qualifierList, $IDENT, $alias, $assignments); }
;
alias: %empty { $$ = kNothing; } | AS ALIAS { $$ = $ALIAS; } ;
assignments:
  %empty                          { $$ = StartOf(scan.File().assignments); }
| assignments[before] assignment  { $$ = UpTo($before, scan.File().assignments); }
;
assignment:
  qualifierList name EQUALS initializer semicolon
    { scan.AddAssignment($qualifierList, $name, $initializer); }
| error SEMICOLON                 { yyerrok; }
;

initializer: literal { $$ = scan.Scalar($literal); } | array ;
array:
  LBRACE values RBRACE            { $$ = {true, true, $values, @$}; }
| LBRACE RBRACE                   { $$ = {true, true, kEmpty, @$}; }
;
values:
  literal                         { $$ = scan.Scalar($literal).literals; }
| values[before] COMMA literal    { $$ = {$before.first, scan.Scalar($literal).literals.first + 1 - $before.first}; }
;
literal:
  STRING
| INTEGER                         { $$ = Plain(ELiteral::kInteger, @1); }
| REAL                            { $$ = Plain(ELiteral::kReal, @1); }
| BOOLEAN                         { $$ = Plain(ELiteral::kBoolean, @1); }
| NULLWORD                        { $$ = Plain(ELiteral::kNull, @1); }
| ALIAS                           { $$ = Plain(ELiteral::kAlias, @1); }
| CHARACTER
| BADLITERAL
;
%%

namespace velhost::Mof {

void TMofParser::report_syntax_error(const context& where) const {
  if (scan.Stopped()) return;
  TExpected expected;
  if (scan.Shows()) {
    std::array<symbol_kind_type, YYNTOKENS> tokens{};
    const int count = where.expected_tokens(tokens.data(), static_cast<int>(tokens.size()));
    for (int i = 0; i < count; ++i) expected.Add(tokens[static_cast<std::size_t>(i)]);
  }
  const std::uint32_t place = where.location().begin;
  if (expected.IsReference()) {
    // A word that is not a type can only have been meant as a class.
    const TSpan word = scan.WordBefore(place);
    scan.SyntaxError(word.begin, "found " + Quoted(scan.Text(word)) + ", expected a type, or a class name and 'ref'" +
                               HintOfType(scan.Text(word)));
    return;
  }
  const bool atEnd = where.token() == symbol_kind::S_YYEOF;
  const std::string found = atEnd ? scan.NameOfEnd() : Quoted(scan.Text(where.location()));
  scan.SyntaxError(place, "found " + found + ", expected " + expected.Text(scan.NameOfEnd()) +
                              (atEnd ? scan.OpenBracket() : ""));
}

void TMofParser::error(const TSpan& span, const std::string& message) { scan.Error(span.begin, message); }

TMofFile ParseMof(TSchemaSource& source, const TSchemaUnit& unit, const TSchemaLimits& limits, TSchemaLog& log) {
  TScan scan(source, unit, limits, log);
  {
    TScanner scanner(scan);
    TMofParser(scan, scanner).parse();
  }
  return std::move(scan.File());
}

}  // namespace velhost::Mof
