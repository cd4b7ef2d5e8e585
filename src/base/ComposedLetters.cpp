// Letters with marks, for systems whose own library does not compose them.
#ifndef _WIN32

#include "base/CaseMapping.h"

#include <algorithm>
#include <iterator>

namespace dax {

namespace {

// A combining mark, the letters in front of it in their order, and what each becomes with it: the canonical
// composites of Unicode.
struct Composites {
    char16_t mark;
    TextView letters, composed;
};

constexpr Composites table[] = {
    {0x0300, u"AEINOUWYaeinouwy\u00A8ÂÊÔÜâêôüĂăĒēŌōƠơƯưΑΕΗΙΟΥΩαεηιουωϊϋЕИеиἀἁἈἉἐἑἘἙἠἡἨἩἰἱἸἹὀὁὈὉὐὑὙὠὡὨὩ\u1FBF\u1FFE",
     u"ÀÈÌǸÒÙẀỲàèìǹòùẁỳ\u1FEDẦỀỒǛầềồǜẰằḔḕṐṑỜờỪừᾺῈῊῚῸῪῺὰὲὴὶὸὺὼῒῢЀЍѐѝἂἃἊἋἒἓἚἛἢἣἪἫἲἳἺἻὂὃὊὋὒὓὛὢὣὪὫ\u1FCD\u1FDD"},
    {0x0301,
     u"ACEGIKLMNOPRSUWYZacegiklmnoprsuwyz\u00A8ÂÅÆÇÊÏÔÕØÜâåæçêïôõøüĂăĒēŌōŨũƠơƯưΑΕΗΙΟΥΩαεηιουωϊϋϒГКгкἀἁἈἉἐἑἘἙἠἡἨἩἰἱἸἹὀὁὈ"
     u"ὉὐὑὙὠὡὨὩ\u1FBF\u1FFE",
     u"ÁĆÉǴÍḰĹḾŃÓṔŔŚÚẂÝŹáćéǵíḱĺḿńóṕŕśúẃýź\u0385ẤǺǼḈẾḮỐṌǾǗấǻǽḉếḯốṍǿǘẮắḖḗṒṓṸṹỚớỨứΆΈΉΊΌΎΏάέήίόύώΐΰϓЃЌѓќἄἅἌἍἔἕἜἝἤἥἬἭἴἵἼἽὄὅὌ"
     u"ὍὔὕὝὤὥὬὭ\u1FCE\u1FDE"},
    {0x0302, u"ACEGHIJOSUWYZaceghijosuwyzẠạẸẹỌọ", u"ÂĈÊĜĤÎĴÔŜÛŴŶẐâĉêĝĥîĵôŝûŵŷẑẬậỆệỘộ"},
    {0x0303, u"AEINOUVYaeinouvyÂÊÔâêôĂăƠơƯư", u"ÃẼĨÑÕŨṼỸãẽĩñõũṽỹẪỄỖẫễỗẴẵỠỡỮữ"},
    {0x0304, u"AEGIOUYaegiouyÄÆÕÖÜäæõöüǪǫȦȧȮȯΑΙΥαιυИУиуḶḷṚṛ", u"ĀĒḠĪŌŪȲāēḡīōūȳǞǢȬȪǕǟǣȭȫǖǬǭǠǡȰȱᾹῙῩᾱῑῡӢӮӣӯḸḹṜṝ"},
    {0x0306, u"AEGIOUaegiouȨȩΑΙΥαιυАЕЖИУаежиуẠạ", u"ĂĔĞĬŎŬăĕğĭŏŭḜḝᾸῘῨᾰῐῠӐӖӁЙЎӑӗӂйўẶặ"},
    {0x0307, u"ABCDEFGHIMNOPRSTWXYZabcdefghmnoprstwxyzŚśŠšſṢṣ", u"ȦḂĊḊĖḞĠḢİṀṄȮṖṘṠṪẆẊẎŻȧḃċḋėḟġḣṁṅȯṗṙṡṫẇẋẏżṤṥṦṧẛṨṩ"},
    {0x0308, u"AEHIOUWXYaehiotuwxyÕõŪūΙΥιυϒІАЕЖЗИОУЧЫЭаежзиоучыэіӘәӨө",
     u"ÄËḦÏÖÜẄẌŸäëḧïöẗüẅẍÿṎṏṺṻΪΫϊϋϔЇӒЁӜӞӤӦӰӴӸӬӓёӝӟӥӧӱӵӹӭїӚӛӪӫ"},
    {0x0309, u"AEIOUYaeiouyÂÊÔâêôĂăƠơƯư", u"ẢẺỈỎỦỶảẻỉỏủỷẨỂỔẩểổẲẳỞởỬử"},
    {0x030A, u"AUauwy", u"ÅŮåůẘẙ"},
    {0x030B, u"OUouУу", u"ŐŰőűӲӳ"},
    {0x030C, u"ACDEGHIKLNORSTUZacdeghijklnorstuzÜüƷʒ", u"ǍČĎĚǦȞǏǨĽŇǑŘŠŤǓŽǎčďěǧȟǐǰǩľňǒřšťǔžǙǚǮǯ"},
    {0x030F, u"AEIORUaeioruѴѵ", u"ȀȄȈȌȐȔȁȅȉȍȑȕѶѷ"},
    {0x0311, u"AEIORUaeioru", u"ȂȆȊȎȒȖȃȇȋȏȓȗ"},
    {0x0313, u"ΑΕΗΙΟΩαεηιορυω", u"ἈἘἨἸὈὨἀἐἠἰὀῤὐὠ"},
    {0x0314, u"ΑΕΗΙΟΡΥΩαεηιορυω", u"ἉἙἩἹὉῬὙὩἁἑἡἱὁῥὑὡ"},
    {0x031B, u"OUou", u"ƠƯơư"},
    {0x0323, u"ABDEHIKLMNORSTUVWYZabdehiklmnorstuvwyzƠơƯư", u"ẠḄḌẸḤỊḲḶṂṆỌṚṢṬỤṾẈỴẒạḅḍẹḥịḳḷṃṇọṛṣṭụṿẉỵẓỢợỰự"},
    {0x0324, u"Uu", u"Ṳṳ"},
    {0x0325, u"Aa", u"Ḁḁ"},
    {0x0326, u"STst", u"ȘȚșț"},
    {0x0327, u"CDEGHKLNRSTcdeghklnrst", u"ÇḐȨĢḨĶĻŅŖŞŢçḑȩģḩķļņŗşţ"},
    {0x0328, u"AEIOUaeiou", u"ĄĘĮǪŲąęįǫų"},
    {0x032D, u"DELNTUdelntu", u"ḒḘḼṊṰṶḓḙḽṋṱṷ"},
    {0x032E, u"Hh", u"Ḫḫ"},
    {0x0330, u"EIUeiu", u"ḚḬṴḛḭṵ"},
    {0x0331, u"BDKLNRTZbdhklnrtz", u"ḆḎḴḺṈṞṮẔḇḏẖḵḻṉṟṯẕ"},
    {0x0338,
     u"<=>"
     u"\u2190\u2192\u2194\u21D0\u21D2\u21D4\u2203\u2208\u220B\u2223\u2225\u223C\u2243\u2245\u2248\u224D\u2261\u2264"
     u"\u2265\u2272\u2273\u2276\u2277\u227A\u227B\u227C\u227D\u2282\u2283\u2286\u2287\u2291\u2292\u22A2\u22A8\u22A9"
     u"\u22AB\u22B2\u22B3\u22B4\u22B5",
     u"\u226E\u2260\u226F\u219A\u219B\u21AE\u21CD\u21CF\u21CE\u2204\u2209\u220C\u2224\u2226\u2241\u2244\u2247\u2249"
     u"\u226D\u2262\u2270\u2271\u2274\u2275\u2278\u2279\u2280\u2281\u22E0\u22E1\u2284\u2285\u2288\u2289\u22E2\u22E3"
     u"\u22AC\u22AD\u22AE\u22AF\u22EA\u22EB\u22EC\u22ED"},
    {0x0342, u"\u00A8αηιυωϊϋἀἁἈἉἠἡἨἩἰἱἸἹὐὑὙὠὡὨὩ\u1FBF\u1FFE", u"\u1FC1ᾶῆῖῦῶῗῧἆἇἎἏἦἧἮἯἶἷἾἿὖὗὟὦὧὮὯ\u1FCF\u1FDF"},
    {0x0345, u"ΑΗΩάήαηωώἀἁἂἃἄἅἆἇἈἉἊἋἌἍἎἏἠἡἢἣἤἥἦἧἨἩἪἫἬἭἮἯὠὡὢὣὤὥὦὧὨὩὪὫὬὭὮὯὰὴὼᾶῆῶ",
     u"ᾼῌῼᾴῄᾳῃῳῴᾀᾁᾂᾃᾄᾅᾆᾇᾈᾉᾊᾋᾌᾍᾎᾏᾐᾑᾒᾓᾔᾕᾖᾗᾘᾙᾚᾛᾜᾝᾞᾟᾠᾡᾢᾣᾤᾥᾦᾧᾨᾩᾪᾫᾬᾭᾮᾯᾲῂῲᾷῇῷ"},
    {0x0653, u"\u0627", u"\u0622"},
    {0x0654, u"\u0627\u0648\u064A\u06C1\u06D2\u06D5", u"\u0623\u0624\u0626\u06C2\u06D3\u06C0"},
    {0x0655, u"\u0627", u"\u0625"},
    {0x093C, u"\u0928\u0930\u0933", u"\u0929\u0931\u0934"},
    {0x09BE, u"\u09C7", u"\u09CB"},
    {0x09D7, u"\u09C7", u"\u09CC"},
    {0x0B3E, u"\u0B47", u"\u0B4B"},
    {0x0B56, u"\u0B47", u"\u0B48"},
    {0x0B57, u"\u0B47", u"\u0B4C"},
    {0x0BBE, u"\u0BC6\u0BC7", u"\u0BCA\u0BCB"},
    {0x0BD7, u"\u0B92\u0BC6", u"\u0B94\u0BCC"},
    {0x0C56, u"\u0C46", u"\u0C48"},
    {0x0CC2, u"\u0CC6", u"\u0CCA"},
    {0x0CD5, u"\u0CBF\u0CC6\u0CCA", u"\u0CC0\u0CC7\u0CCB"},
    {0x0CD6, u"\u0CC6", u"\u0CC8"},
    {0x0D3E, u"\u0D46\u0D47", u"\u0D4A\u0D4B"},
    {0x0D57, u"\u0D46", u"\u0D4C"},
    {0x0DCA, u"\u0DD9\u0DDC", u"\u0DDA\u0DDD"},
    {0x0DCF, u"\u0DD9", u"\u0DDC"},
    {0x0DDF, u"\u0DD9", u"\u0DDE"},
    {0x102E, u"\u1025", u"\u1026"},
    {0x1B35, u"\u1B05\u1B07\u1B09\u1B0B\u1B0D\u1B11\u1B3A\u1B3C\u1B3E\u1B3F\u1B42",
     u"\u1B06\u1B08\u1B0A\u1B0C\u1B0E\u1B12\u1B3B\u1B3D\u1B40\u1B41\u1B43"},
    {0x3099, u"うかきくけこさしすせそたちつてとはひふへほゝウカキクケコサシスセソタチツテトハヒフヘホワヰヱヲヽ",
     u"ゔがぎぐげござじずぜぞだぢづでどばびぶべぼゞヴガギグゲゴザジズゼゾダヂヅデドバビブベボヷヸヹヺヾ"},
    {0x309A, u"はひふへほハヒフヘホ", u"ぱぴぷぺぽパピプペポ"},
};

// Characters that Unicode has twice, and the one to use.
constexpr TextView same =
    u"\u0340\u0341\u0343\u0374\u037E\u0387\u1F71\u1F73\u1F75\u1F77\u1F79\u1F7B\u1F7D\u1FBB\u1FBE\u1FC9\u1FCB\u1FD3"
    u"\u1FDB\u1FE3\u1FEB\u1FEE\u1FEF\u1FF9\u1FFB\u1FFD\u2000\u2001\u2126\u212A\u212B\u2329\u232A\uF900\uF901\uF902"
    u"\uF903\uF904\uF905\uF906\uF907\uF908\uF909\uF90A\uF90B\uF90C\uF90D\uF90E\uF90F\uF910\uF911\uF912\uF913\uF914"
    u"\uF915\uF916\uF917\uF918\uF919\uF91A\uF91B\uF91C\uF91D\uF91E\uF91F\uF920\uF921\uF922\uF923\uF924\uF925\uF926"
    u"\uF927\uF928\uF929\uF92A\uF92B\uF92C\uF92D\uF92E\uF92F\uF930\uF931\uF932\uF933\uF934\uF935\uF936\uF937\uF938"
    u"\uF939\uF93A\uF93B\uF93C\uF93D\uF93E\uF93F\uF940\uF941\uF942\uF943\uF944\uF945\uF946\uF947\uF948\uF949\uF94A"
    u"\uF94B\uF94C\uF94D\uF94E\uF94F\uF950\uF951\uF952\uF953\uF954\uF955\uF956\uF957\uF958\uF959\uF95A\uF95B\uF95C"
    u"\uF95D\uF95E\uF95F\uF960\uF961\uF962\uF963\uF964\uF965\uF966\uF967\uF968\uF969\uF96A\uF96B\uF96C\uF96D\uF96E"
    u"\uF96F\uF970\uF971\uF972\uF973\uF974\uF975\uF976\uF977\uF978\uF979\uF97A\uF97B\uF97C\uF97D\uF97E\uF97F\uF980"
    u"\uF981\uF982\uF983\uF984\uF985\uF986\uF987\uF988\uF989\uF98A\uF98B\uF98C\uF98D\uF98E\uF98F\uF990\uF991\uF992"
    u"\uF993\uF994\uF995\uF996\uF997\uF998\uF999\uF99A\uF99B\uF99C\uF99D\uF99E\uF99F\uF9A0\uF9A1\uF9A2\uF9A3\uF9A4"
    u"\uF9A5\uF9A6\uF9A7\uF9A8\uF9A9\uF9AA\uF9AB\uF9AC\uF9AD\uF9AE\uF9AF\uF9B0\uF9B1\uF9B2\uF9B3\uF9B4\uF9B5\uF9B6"
    u"\uF9B7\uF9B8\uF9B9\uF9BA\uF9BB\uF9BC\uF9BD\uF9BE\uF9BF\uF9C0\uF9C1\uF9C2\uF9C3\uF9C4\uF9C5\uF9C6\uF9C7\uF9C8"
    u"\uF9C9\uF9CA\uF9CB\uF9CC\uF9CD\uF9CE\uF9CF\uF9D0\uF9D1\uF9D2\uF9D3\uF9D4\uF9D5\uF9D6\uF9D7\uF9D8\uF9D9\uF9DA"
    u"\uF9DB\uF9DC\uF9DD\uF9DE\uF9DF\uF9E0\uF9E1\uF9E2\uF9E3\uF9E4\uF9E5\uF9E6\uF9E7\uF9E8\uF9E9\uF9EA\uF9EB\uF9EC"
    u"\uF9ED\uF9EE\uF9EF\uF9F0\uF9F1\uF9F2\uF9F3\uF9F4\uF9F5\uF9F6\uF9F7\uF9F8\uF9F9\uF9FA\uF9FB\uF9FC\uF9FD\uF9FE"
    u"\uF9FF\uFA00\uFA01\uFA02\uFA03\uFA04\uFA05\uFA06\uFA07\uFA08\uFA09\uFA0A\uFA0B\uFA0C\uFA0D\uFA10\uFA12\uFA15"
    u"\uFA16\uFA17\uFA18\uFA19\uFA1A\uFA1B\uFA1C\uFA1D\uFA1E\uFA20\uFA22\uFA25\uFA26\uFA2A\uFA2B\uFA2C\uFA2D\uFA2E"
    u"\uFA2F\uFA30\uFA31\uFA32\uFA33\uFA34\uFA35\uFA36\uFA37\uFA38\uFA39\uFA3A\uFA3B\uFA3C\uFA3D\uFA3E\uFA3F\uFA40"
    u"\uFA41\uFA42\uFA43\uFA44\uFA45\uFA46\uFA47\uFA48\uFA49\uFA4A\uFA4B\uFA4C\uFA4D\uFA4E\uFA4F\uFA50\uFA51\uFA52"
    u"\uFA53\uFA54\uFA55\uFA56\uFA57\uFA58\uFA59\uFA5A\uFA5B\uFA5C\uFA5D\uFA5E\uFA5F\uFA60\uFA61\uFA62\uFA63\uFA64"
    u"\uFA65\uFA66\uFA67\uFA68\uFA69\uFA6A\uFA6B\uFA6D\uFA70\uFA71\uFA72\uFA73\uFA74\uFA75\uFA76\uFA77\uFA78\uFA79"
    u"\uFA7A\uFA7B\uFA7C\uFA7D\uFA7E\uFA7F\uFA80\uFA81\uFA82\uFA83\uFA84\uFA85\uFA86\uFA87\uFA88\uFA89\uFA8A\uFA8B"
    u"\uFA8C\uFA8D\uFA8E\uFA8F\uFA90\uFA91\uFA92\uFA93\uFA94\uFA95\uFA96\uFA97\uFA98\uFA99\uFA9A\uFA9B\uFA9C\uFA9D"
    u"\uFA9E\uFA9F\uFAA0\uFAA1\uFAA2\uFAA3\uFAA4\uFAA5\uFAA6\uFAA7\uFAA8\uFAA9\uFAAA\uFAAB\uFAAC\uFAAD\uFAAE\uFAAF"
    u"\uFAB0\uFAB1\uFAB2\uFAB3\uFAB4\uFAB5\uFAB6\uFAB7\uFAB8\uFAB9\uFABA\uFABB\uFABC\uFABD\uFABE\uFABF\uFAC0\uFAC1"
    u"\uFAC2\uFAC3\uFAC4\uFAC5\uFAC6\uFAC7\uFAC8\uFAC9\uFACA\uFACB\uFACC\uFACD\uFACE\uFAD2\uFAD3\uFAD4\uFAD8\uFAD9";
constexpr TextView canonical =
    u"\u0300\u0301\u0313\u02B9;"
    u"\u00B7\u03AC\u03AD\u03AE\u03AF\u03CC\u03CD\u03CE\u0386\u03B9\u0388\u0389\u0390\u038A\u03B0\u038E\u0385`"
    u"\u038C\u038F\u00B4\u2002\u2003\u03A9K\u00C5\u3008\u3009\u8C48\u66F4\u8ECA\u8CC8\u6ED1\u4E32\u53E5\u9F9C\u9F9C"
    u"\u5951\u91D1\u5587\u5948\u61F6\u7669\u7F85\u863F\u87BA\u88F8\u908F\u6A02\u6D1B\u70D9\u73DE\u843D\u916A\u99F1"
    u"\u4E82\u5375\u6B04\u721B\u862D\u9E1E\u5D50\u6FEB\u85CD\u8964\u62C9\u81D8\u881F\u5ECA\u6717\u6D6A\u72FC\u90CE"
    u"\u4F86\u51B7\u52DE\u64C4\u6AD3\u7210\u76E7\u8001\u8606\u865C\u8DEF\u9732\u9B6F\u9DFA\u788C\u797F\u7DA0\u83C9"
    u"\u9304\u9E7F\u8AD6\u58DF\u5F04\u7C60\u807E\u7262\u78CA\u8CC2\u96F7\u58D8\u5C62\u6A13\u6DDA\u6F0F\u7D2F\u7E37"
    u"\u964B\u52D2\u808B\u51DC\u51CC\u7A1C\u7DBE\u83F1\u9675\u8B80\u62CF\u6A02\u8AFE\u4E39\u5BE7\u6012\u7387\u7570"
    u"\u5317\u78FB\u4FBF\u5FA9\u4E0D\u6CCC\u6578\u7D22\u53C3\u585E\u7701\u8449\u8AAA\u6BBA\u8FB0\u6C88\u62FE\u82E5"
    u"\u63A0\u7565\u4EAE\u5169\u51C9\u6881\u7CE7\u826F\u8AD2\u91CF\u52F5\u5442\u5973\u5EEC\u65C5\u6FFE\u792A\u95AD"
    u"\u9A6A\u9E97\u9ECE\u529B\u66C6\u6B77\u8F62\u5E74\u6190\u6200\u649A\u6F23\u7149\u7489\u79CA\u7DF4\u806F\u8F26"
    u"\u84EE\u9023\u934A\u5217\u52A3\u54BD\u70C8\u88C2\u8AAA\u5EC9\u5FF5\u637B\u6BAE\u7C3E\u7375\u4EE4\u56F9\u5BE7"
    u"\u5DBA\u601C\u73B2\u7469\u7F9A\u8046\u9234\u96F6\u9748\u9818\u4F8B\u79AE\u91B4\u96B8\u60E1\u4E86\u50DA\u5BEE"
    u"\u5C3F\u6599\u6A02\u71CE\u7642\u84FC\u907C\u9F8D\u6688\u962E\u5289\u677B\u67F3\u6D41\u6E9C\u7409\u7559\u786B"
    u"\u7D10\u985E\u516D\u622E\u9678\u502B\u5D19\u6DEA\u8F2A\u5F8B\u6144\u6817\u7387\u9686\u5229\u540F\u5C65\u6613"
    u"\u674E\u68A8\u6CE5\u7406\u75E2\u7F79\u88CF\u88E1\u91CC\u96E2\u533F\u6EBA\u541D\u71D0\u7498\u85FA\u96A3\u9C57"
    u"\u9E9F\u6797\u6DCB\u81E8\u7ACB\u7B20\u7C92\u72C0\u7099\u8B58\u4EC0\u8336\u523A\u5207\u5EA6\u62D3\u7CD6\u5B85"
    u"\u6D1E\u66B4\u8F3B\u884C\u964D\u898B\u5ED3\u5140\u55C0\u585A\u6674\u51DE\u732A\u76CA\u793C\u795E\u7965\u798F"
    u"\u9756\u7CBE\u7FBD\u8612\u8AF8\u9038\u90FD\u98EF\u98FC\u9928\u9DB4\u90DE\u96B7\u4FAE\u50E7\u514D\u52C9\u52E4"
    u"\u5351\u559D\u5606\u5668\u5840\u58A8\u5C64\u5C6E\u6094\u6168\u618E\u61F2\u654F\u65E2\u6691\u6885\u6D77\u6E1A"
    u"\u6F22\u716E\u722B\u7422\u7891\u793E\u7949\u7948\u7950\u7956\u795D\u798D\u798E\u7A40\u7A81\u7BC0\u7DF4\u7E09"
    u"\u7E41\u7F72\u8005\u81ED\u8279\u8279\u8457\u8910\u8996\u8B01\u8B39\u8CD3\u8D08\u8FB6\u9038\u96E3\u97FF\u983B"
    u"\u6075\u8218\u4E26\u51B5\u5168\u4F80\u5145\u5180\u52C7\u52FA\u559D\u5555\u5599\u55E2\u585A\u58B3\u5944\u5954"
    u"\u5A62\u5B28\u5ED2\u5ED9\u5F69\u5FAD\u60D8\u614E\u6108\u618E\u6160\u61F2\u6234\u63C4\u641C\u6452\u6556\u6674"
    u"\u6717\u671B\u6756\u6B79\u6BBA\u6D41\u6EDB\u6ECB\u6F22\u701E\u716E\u77A7\u7235\u72AF\u732A\u7471\u7506\u753B"
    u"\u761D\u761F\u76CA\u76DB\u76F4\u774A\u7740\u78CC\u7AB1\u7BC0\u7C7B\u7D5B\u7DF4\u7F3E\u8005\u8352\u83EF\u8779"
    u"\u8941\u8986\u8996\u8ABF\u8AF8\u8ACB\u8B01\u8AFE\u8AED\u8B39\u8B8A\u8D08\u8F38\u9072\u9199\u9276\u967C\u96E3"
    u"\u9756\u97DB\u97FF\u980B\u983B\u9B12\u9F9C\u3B9D\u4018\u4039\u9F43\u9F8E";
static_assert(same.size() == canonical.size());

// Characters that are only a letter and its mark, which stay two.
constexpr TextView joined =
    u"\u0344\u0958\u0959\u095A\u095B\u095C\u095D\u095E\u095F\u09DC\u09DD\u09DF\u0A33\u0A36\u0A59\u0A5A\u0A5B\u0A5E"
    u"\u0B5C\u0B5D\u0F43\u0F4D\u0F52\u0F57\u0F5C\u0F69\u0F73\u0F75\u0F76\u0F78\u0F81\u0F93\u0F9D\u0FA2\u0FA7\u0FAC"
    u"\u0FB9\u2ADC\uFB1D\uFB1F\uFB2A\uFB2B\uFB2C\uFB2D\uFB2E\uFB2F\uFB30\uFB31\uFB32\uFB33\uFB34\uFB35\uFB36\uFB38"
    u"\uFB39\uFB3A\uFB3B\uFB3C\uFB3E\uFB40\uFB41\uFB43\uFB44\uFB46\uFB47\uFB48\uFB49\uFB4A\uFB4B\uFB4C\uFB4D\uFB4E";
constexpr TextView parts[] = {
    u"\u0308\u0301",       u"\u0915\u093C",       u"\u0916\u093C", u"\u0917\u093C", u"\u091C\u093C", u"\u0921\u093C",
    u"\u0922\u093C",       u"\u092B\u093C",       u"\u092F\u093C", u"\u09A1\u09BC", u"\u09A2\u09BC", u"\u09AF\u09BC",
    u"\u0A32\u0A3C",       u"\u0A38\u0A3C",       u"\u0A16\u0A3C", u"\u0A17\u0A3C", u"\u0A1C\u0A3C", u"\u0A2B\u0A3C",
    u"\u0B21\u0B3C",       u"\u0B22\u0B3C",       u"\u0F42\u0FB7", u"\u0F4C\u0FB7", u"\u0F51\u0FB7", u"\u0F56\u0FB7",
    u"\u0F5B\u0FB7",       u"\u0F40\u0FB5",       u"\u0F71\u0F72", u"\u0F71\u0F74", u"\u0FB2\u0F80", u"\u0FB3\u0F80",
    u"\u0F71\u0F80",       u"\u0F92\u0FB7",       u"\u0F9C\u0FB7", u"\u0FA1\u0FB7", u"\u0FA6\u0FB7", u"\u0FAB\u0FB7",
    u"\u0F90\u0FB5",       u"\u2ADD\u0338",       u"\u05D9\u05B4", u"\u05F2\u05B7", u"\u05E9\u05C1", u"\u05E9\u05C2",
    u"\u05E9\u05BC\u05C1", u"\u05E9\u05BC\u05C2", u"\u05D0\u05B7", u"\u05D0\u05B8", u"\u05D0\u05BC", u"\u05D1\u05BC",
    u"\u05D2\u05BC",       u"\u05D3\u05BC",       u"\u05D4\u05BC", u"\u05D5\u05BC", u"\u05D6\u05BC", u"\u05D8\u05BC",
    u"\u05D9\u05BC",       u"\u05DA\u05BC",       u"\u05DB\u05BC", u"\u05DC\u05BC", u"\u05DE\u05BC", u"\u05E0\u05BC",
    u"\u05E1\u05BC",       u"\u05E3\u05BC",       u"\u05E4\u05BC", u"\u05E6\u05BC", u"\u05E7\u05BC", u"\u05E8\u05BC",
    u"\u05E9\u05BC",       u"\u05EA\u05BC",       u"\u05D5\u05B9", u"\u05D1\u05BF", u"\u05DB\u05BF", u"\u05E4\u05BF"};
static_assert(joined.size() == std::size(parts));

// Syllables of Hangul are computed from their letters.
constexpr char16_t firstSyllable = 0xAC00, firstLead = 0x1100, firstVowel = 0x1161, beforeTrail = 0x11A7;
constexpr int leads = 19, vowels = 21, trails = 28;

// In a list in the order of its characters.
size_t IndexIn(TextView list, char16_t unit) {
    const auto found = std::lower_bound(list.begin(), list.end(), unit);
    return found == list.end() || *found != unit ? TextView::npos : static_cast<size_t>(found - list.begin());
}

bool IsWithin(char16_t unit, char16_t first, int count) { return unit >= first && unit < first + count; }

// Zero when there is no composite.
char16_t ComposeTwo(char16_t letter, char16_t mark) {
    if (IsWithin(letter, firstLead, leads) && IsWithin(mark, firstVowel, vowels))
        return static_cast<char16_t>(firstSyllable + ((letter - firstLead) * vowels + (mark - firstVowel)) * trails);
    if (IsWithin(letter, firstSyllable, leads * vowels * trails) && (letter - firstSyllable) % trails == 0 &&
        IsWithin(mark, beforeTrail + 1, trails - 1))
        return static_cast<char16_t>(letter + (mark - beforeTrail));
    const auto row = std::lower_bound(std::begin(table), std::end(table), mark,
                                      [](const Composites& each, char16_t requested) { return each.mark < requested; });
    if (row == std::end(table) || row->mark != mark) return 0;
    const size_t index = IndexIn(row->letters, letter);
    return index == TextView::npos ? u'\0' : row->composed[index];
}

} // namespace

Text ComposeMarks(TextView text) {
    Text composed;
    for (char16_t unit : text) {
        if (const size_t index = IndexIn(joined, unit); index != TextView::npos) {
            composed += parts[index];
            continue;
        }
        if (const size_t index = IndexIn(same, unit); index != TextView::npos) unit = canonical[index];
        const char16_t joined = composed.empty() ? u'\0' : ComposeTwo(composed.back(), unit);
        if (joined)
            composed.back() = joined;
        else
            composed.push_back(unit);
    }
    return composed;
}

} // namespace dax

#endif
