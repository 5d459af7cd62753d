-- Roles, and a database that is born closed: nothing made later is open to a request unless it is granted.

DO $$
BEGIN
    -- Whom a request becomes. A hosted project has it already, a bare PostgreSQL does not.
    IF to_regrole('anon') IS NULL THEN
        CREATE ROLE anon NOLOGIN NOINHERIT;
    END IF;
    -- Whom the six functions run as: it reads, and nobody logs in as it.
    IF to_regrole('fernhollow_reader') IS NULL THEN
        CREATE ROLE fernhollow_reader NOLOGIN NOINHERIT;
    END IF;
    -- Only a member may hand a function over to it. From PostgreSQL 16 on, a role that creates another one is
    -- its member without the rights of a member, so MEMBER would not do.
    IF NOT pg_has_role(current_user, 'fernhollow_reader', 'USAGE') THEN
        EXECUTE format('GRANT fernhollow_reader TO %I', current_user);
    END IF;
END
$$;

REVOKE ALL ON SCHEMA public FROM PUBLIC;
GRANT USAGE ON SCHEMA public TO anon, fernhollow_reader;

-- What PostgreSQL gives to everybody can be taken back only for the whole database, not for one schema.
ALTER DEFAULT PRIVILEGES REVOKE EXECUTE ON FUNCTIONS FROM PUBLIC;

-- A hosted project grants all rights in this schema to the roles of requests, deleting included.
DO $$
DECLARE
    requester text;
BEGIN
    FOREACH requester IN ARRAY ARRAY['anon', 'authenticated'] LOOP
        IF to_regrole(requester) IS NOT NULL THEN
            EXECUTE format('ALTER DEFAULT PRIVILEGES IN SCHEMA public REVOKE ALL ON TABLES FROM %I', requester);
            EXECUTE format('ALTER DEFAULT PRIVILEGES IN SCHEMA public REVOKE ALL ON SEQUENCES FROM %I', requester);
            EXECUTE format('ALTER DEFAULT PRIVILEGES IN SCHEMA public REVOKE ALL ON FUNCTIONS FROM %I', requester);
        END IF;
    END LOOP;
END
$$;
